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
  using enum MixerStatus::Event;

  const struct {
    const char* notice;
    MixerStatus status;
    int rows;
    const char* shown;
  } cases[] = {
      {"", {}, 0, ""},
      {"", {.event = noAppsYet}, 0, ""},
      {"", {.event = noAppsYet}, 1, "No apps have played audio yet."},
      {"", {.event = appsListed, .playing = 3}, 3, "3 playing"},
      {"", {.event = appsListed, .idle = 4}, 4, "0 playing \u00B7 4 idle"},
      {"",
       {.event = permissionRevoked},
       0,
       "Audio access was revoked. Audio was restored to its normal output."},
      {"",
       {.event = restorationFails, .failures = "A; B"},
       0,
       "Audio access was revoked. Audio restoration is retrying: A; B"},
      {"Sound is away", {.event = appsListed, .playing = 2}, 2, "Sound is away"},
  };

  for (const auto& [notice, status, rows, shown] : cases)
    EXPECT_EQ(PanelText::statusLine(notice, status, rows), QString::fromUtf8(shown));
}

TEST(PanelTextTest, AFailureIsSaidInWordsWithItsNumberBehind) {
  EXPECT_EQ(PanelText::errorText("output device failed (OSStatus -1)", kNoError),
            "output device failed (OSStatus -1)");
  EXPECT_EQ(PanelText::errorText("CreateAggregateDevice failed (OSStatus 560227702)", status::kBadDevice),
            "The device is not there. CreateAggregateDevice failed (OSStatus 560227702)");
}

TEST(PanelTextTest, IconsByPidAndEncodedNames) {
  const AudioApp app{.pid = 7, .bundleID = "org.a/b c", .name = "A", .parentBundleID = "org.parent"};
  EXPECT_EQ(PanelText::appIcon(app, true).toEncoded(), "image://app-icon/7/org.a%2Fb%20c/org.parent/0");
}

} // namespace
} // namespace sonvel
