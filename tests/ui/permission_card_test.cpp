#include "ui/panel_test.h"

#include <QSignalSpy>

namespace sonvel {
namespace {

class PermissionCardTest : public PanelTest {};

const QString kDenied =
    "Access is currently denied. Enable “Sonvel” under Privacy & Security ▸ Audio Recording, "
    "then it appears automatically.";
const QString kExplanation =
    "To show and adjust each app's sound, macOS asks Sonvel to access system audio — the modern, driverless "
    "method. Nothing is recorded, saved, or sent; no restart, no kernel extension. You can revoke it "
    "anytime.";

TEST_F(PermissionCardTest, WelcomesOnTheFirstRunAndSaysWhatToDoWhenDenied) {
  struct Case {
    std::optional<int> preflight;
    bool didOnboard;
    const char* title;
    bool isDenied;
  };

  const std::array cases{
      Case{2, false, "Welcome to Sonvel", false}, Case{std::nullopt, false, "Welcome to Sonvel", false},
      Case{1, false, "Welcome to Sonvel", true}, Case{1, true, "One permission to control app audio", true},
      Case{2, true, "One permission to control app audio", false}};
  for (const auto& each : cases) {
    consent_.setPreflight(each.preflight);
    preferences_.values[MixerViewModel::firstRunKey] = each.didOnboard;
    close();
    model_ = std::make_shared<MixerViewModel>(
        MixerDependencies{actor_, mainThread_, clock_, permission_, preferences_, updates_});
    open();
    EXPECT_TRUE(shows(each.title));
    EXPECT_TRUE(shows(kExplanation));
    EXPECT_EQ(shows(kDenied), each.isDenied) << each.title;
    pass(kMonitorInterval);
  }
}

TEST_F(PermissionCardTest, AsksOnceAndWaits) {
  consent_.setPreflight(2);
  open();
  auto* grant = item(QAccessible::Button, "Grant Audio Access");
  ASSERT_TRUE(grant->isEnabled());
  EXPECT_EQ(accessible(grant)->text(QAccessible::Description),
            "Shows the macOS Audio Recording permission prompt");
  click(grant);
  EXPECT_EQ(item(QAccessible::Button, "Waiting…"), grant);
  EXPECT_FALSE(grant->isEnabled());
  EXPECT_TRUE(grant->property("spinning").toBool());
  click(grant);
  EXPECT_EQ(consent_.openRequests(), 1U);

  consent_.answer(false);
  ASSERT_TRUE(pumpUntil([&] { return grant->isEnabled(); }));
  EXPECT_EQ(item(QAccessible::Button, "Grant Audio Access"), grant);
}

TEST_F(PermissionCardTest, AsksForTheSettings) {
  consent_.setPreflight(1);
  open();
  QSignalSpy settings(root(), SIGNAL(settingsRequested(QUrl)));
  auto* button = item(QAccessible::Button, "Open Settings");
  EXPECT_EQ(accessible(button)->text(QAccessible::Description), "Opens macOS Privacy and Security settings");
  click(button);
  ASSERT_EQ(settings.count(), 1);
  EXPECT_EQ(settings.takeFirst().at(0).toUrl(), QUrl(AudioPermission::settingsURLString));
}

} // namespace
} // namespace sonvel
