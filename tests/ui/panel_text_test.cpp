#include "ui/presentation/panel_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sonvel {
namespace {

TEST(PanelTextTest, NumbersOfAnySize) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const auto& [volume, percent] : {std::pair{0.42, 42}, {1.0, 100}, {0.995, 100}, {std::nan(""), 0}})
    EXPECT_EQ(PanelText::masterPercent(volume), percent);
  for (const auto& [value, percent] : {std::pair{99.5, 100}, {99.49, 99}, {infinity, 1000000}})
    EXPECT_EQ(PanelText::wholePercent(value), percent);
  EXPECT_FALSE(PanelText::isBoost(100));
  EXPECT_EQ(PanelText::number(1200), "1200") << "digits are grouped";
}

TEST(PanelTextTest, OneStatusLine) {
  const char* const kNoApps = "No apps have played audio yet.";

  const struct {
    const char* notice;
    const char* status;
    int rows;
    const char* shown;
  } cases[] = {{"", "", 0, ""},
               {"", kNoApps, 0, ""},
               {"", kNoApps, 1, kNoApps},
               {"", "Audio permission was revoked.", 0, "Audio permission was revoked."},
               {"Sound is away", "2 playing", 2, "Sound is away"}};

  for (const auto& [notice, status, rows, shown] : cases)
    EXPECT_EQ(PanelText::statusLine(notice, status, rows), shown) << status;
}

TEST(PanelTextTest, IconsByPidAndEncodedNames) {
  const AudioApp app{.pid = 7, .bundleID = "org.a/b c", .name = "A", .parentBundleID = "org.parent"};
  EXPECT_EQ(PanelText::appIcon(app, true).toEncoded(), "image://app-icon/7/org.a%2Fb%20c/org.parent/0");
}

} // namespace
} // namespace sonvel
