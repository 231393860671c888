#include "ui/presentation/panel_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sonvel {
namespace {

TEST(PanelTextTest, RoundsToWholePercent) {
  EXPECT_EQ(PanelText::masterPercent(0.42), 42);
  EXPECT_EQ(PanelText::masterPercent(0.0), 0);
  EXPECT_EQ(PanelText::masterPercent(1.0), 100);
  EXPECT_EQ(PanelText::masterPercent(0.995), 100);
  EXPECT_EQ(PanelText::masterPercent(std::nan("")), 0);
  EXPECT_EQ(PanelText::wholePercent(99.5), 100);
  EXPECT_EQ(PanelText::wholePercent(99.49), 99);
  EXPECT_EQ(PanelText::wholePercent(std::numeric_limits<double>::infinity()), 1000000);
}

TEST(PanelTextTest, CutsAMeterToItsTrack) {
  EXPECT_EQ(PanelText::meterFraction(-0.2), 0.0);
  EXPECT_EQ(PanelText::meterFraction(0.25), 0.25);
  EXPECT_EQ(PanelText::meterFraction(1.7), 1.0);
  EXPECT_EQ(PanelText::meterFraction(std::nan("")), 0.0);
}

TEST(PanelTextTest, MarksWhatAmplifies) {
  EXPECT_FALSE(PanelText::isBoost(100));
  EXPECT_TRUE(PanelText::isBoost(101));
}

TEST(PanelTextTest, GroupsNoDigits) {
  EXPECT_EQ(PanelText::number(1200), "1200");
  EXPECT_EQ(PanelText::spokenPercent(150), "150 percent");
}

TEST(PanelTextTest, SaysOneStatus) {
  struct Case {
    const char* notice;
    const char* status;
    int rows;
    const char* shown;
  };

  const std::array cases{
      Case{"", "", 0, ""},
      Case{"", "No apps have played audio yet.", 0, ""},
      Case{"", "No apps have played audio yet.", 1, "No apps have played audio yet."},
      Case{"", "No apps have played audio yet", 0, "No apps have played audio yet"},
      Case{"", "Audio permission was revoked.", 0, "Audio permission was revoked."},
      Case{"", "2 playing", 2, "2 playing"},
      Case{"Sound is away", "2 playing", 2, "Sound is away"},
      Case{"Sound is away", "No apps have played audio yet.", 0, "Sound is away"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(PanelText::statusLine(each.notice, each.status, each.rows), each.shown) << each.status;
}

TEST(PanelTextTest, NamesPicturesAsTheirProvidersExpect) {
  EXPECT_EQ(PanelText::symbol("bolt.fill", QColor(0xff, 0x95, 0x00)).toString(),
            "image://symbol/bolt.fill/ff9500");
  const AudioApp app{.pid = 7, .bundleID = "org.a/b c", .name = "A", .parentBundleID = "org.parent"};
  EXPECT_EQ(PanelText::appIcon(app, true).toEncoded(), "image://app-icon/7/org.a%2Fb%20c/org.parent/0");
  const AudioApp bare{.pid = 8, .bundleID = "pid 8", .name = "B"};
  EXPECT_EQ(PanelText::appIcon(bare, false).toEncoded(), "image://app-icon/8/pid%208//70");
}

TEST(PanelTextTest, OpensTheSettingsOfThePermission) {
  EXPECT_EQ(PanelText::settingsURL().toString(),
            "x-apple.systempreferences:com.apple.preference.security?Privacy_AudioCapture");
  EXPECT_TRUE(PanelText::isDenied(AudioCaptureStatus::denied));
  EXPECT_FALSE(PanelText::isDenied(AudioCaptureStatus::unknown));
  EXPECT_FALSE(PanelText::isDenied(AudioCaptureStatus::undetermined));
}

} // namespace
} // namespace sonvel
