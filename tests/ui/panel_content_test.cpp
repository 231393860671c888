// What the panel says, and how it looks, in every state.

#include "ui/panel_test.h"

#include <QRegularExpression>
#include <QSignalSpy>

namespace sonvel {
namespace {

constexpr auto kOneApplication = R"(slider.vertical.3
text Sonvel
text OUTPUT in secondary
hifispeaker.fill in secondary
text System Output
slider System Output | 0.5 | 
text 50 percent
text APPS in secondary
row Alpha
icon/500/org.Alpha/org.Alpha/0
text Alpha
text 100 percent
button Remove Alpha from the mixer | Remove from list
xmark.circle.fill in tertiary
button Mute Alpha | Mute
speaker.wave.2.fill
slider Alpha volume | 100 | Adjusts this app's output volume
meter 0
button Output for Alpha | System Output
arrow.triangle.branch in secondary
button Reset all | 
arrow.uturn.backward
button Everything → Speakers | 
hifispeaker
text 1 playing in secondary
button Check for Updates |  at 0.45 disabled
button Quit | )";

/// Something that happens, and what it changes in the panel: "-line" for each line that goes, then "+line"
/// for each that comes.
struct Step {
  std::function<void()> happen;
  const char* change;
};

class PanelContentTest : public PanelTest {
 protected:
  void expectChanges(const std::vector<Step>& steps) {
    for (const auto& [happen, change] : steps) {
      auto before = shown();
      happen();
      auto after = shown();
      for (auto line = before.begin(); line != before.end();)
        line = after.removeOne(*line) ? before.erase(line) : line + 1;
      const QRegularExpression start("^");
      const auto lines = before.replaceInStrings(start, "-") + after.replaceInStrings(start, "+");
      EXPECT_EQ(lines.join('\n').toStdString(), change);
    }
  }

  void setPreflight(int preflight) {
    consent_.setPreflight(preflight);
    pass(kMonitorInterval);
  }
};

TEST_F(PanelContentTest, ShowsAnApplicationInEachState) {
  const auto process = play("Alpha", "org.Alpha");
  open();
  EXPECT_EQ(shown().join('\n').toStdString(), kOneApplication);
  auto* const alpha = row("org.Alpha");
  const auto menu = [this](const char* choice) {
    return [this, choice] { click(item(QAccessible::MenuItem, choice)); };
  };
  expectChanges({{[&] { model_->setGain(150, alpha); }, R"(-text 100 percent
-slider Alpha volume | 100 | Adjusts this app's output volume
+bolt.fill in orange
+text 150 percent
+slider Alpha volume | 150 | Adjusts this app's output volume)"},
                 {[&] { alpha->setLevel(0.5F); }, "-meter 0\n+meter 0.5"},
                 {[&] { click(button("Mute Alpha")); }, R"(-text 150 percent
-button Mute Alpha | Mute
-speaker.wave.2.fill
-slider Alpha volume | 150 | Adjusts this app's output volume
-meter 0.5
+text 150 percent in secondary
+button Unmute Alpha | Unmute
+speaker.slash.fill in secondary
+slider Alpha volume | 150 | Adjusts this app's output volume at 0.4
+meter 0)"},
                 {[&] { click(button("Output for Alpha")); }, R"(+item Follow System Output
+checkmark
+item Speakers
+hifispeaker
+item Headset
+hifispeaker)"},
                 {menu("Headset"), R"(-button Output for Alpha | System Output
-arrow.triangle.branch in secondary
-item Follow System Output
-checkmark
-item Speakers
-hifispeaker
-item Headset
-hifispeaker
+button Output for Alpha | Headset
+headphones in accent)"},
                 {[&] { click(button("Output for Alpha")); }, R"(+item Follow System Output
+item Speakers
+hifispeaker
+item Headset
+checkmark)"},
                 {[&] {
                    menu("Follow System Output")();
                    click(button("Unmute Alpha"));
                    alpha->setLastError(CallFailure{"Tap <b>failed</b> (OSStatus -50)"});
                  },
                  R"(-text 150 percent in secondary
-button Unmute Alpha | Unmute
-speaker.slash.fill in secondary
-slider Alpha volume | 150 | Adjusts this app's output volume at 0.4
-meter 0
-button Output for Alpha | Headset
-headphones in accent
-item Follow System Output
-item Speakers
-hifispeaker
-item Headset
-checkmark
+text 150 percent
+button Mute Alpha | Mute
+speaker.wave.2.fill
+slider Alpha volume | 150 | Adjusts this app's output volume
+meter 0.5
+text Audio control error, Tap <b>failed</b> (OSStatus -50)
+button Output for Alpha | System Output
+arrow.triangle.branch in secondary)"},
                 {[&] {
                    alpha->setLastError(std::nullopt);
                    click(button("Output for Alpha"));
                    stopPlaying(process);
                  },
                  R"(-row Alpha
-icon/500/org.Alpha/org.Alpha/0
-text Alpha
-meter 0.5
-text Audio control error, Tap <b>failed</b> (OSStatus -50)
-button Output for Alpha | System Output
-arrow.triangle.branch in secondary
-text 1 playing in secondary
+row Alpha at 0.9
+icon/500/org.Alpha/org.Alpha/70 at 0.5
+text Alpha in secondary
+text idle in secondary
+meter 0 at 0.25
+text Paused — keeps this volume when it plays again in secondary
+text 0 playing · 1 idle in secondary)"},
                 {[&] { alpha->setLastError(CallFailure{"Late"}); },
                  R"(-text Paused — keeps this volume when it plays again in secondary
+text Audio control error, Late)"},
                 {[&] { root()->setProperty("serverNotice", "Sound is away"); },
                  "-text 0 playing · 1 idle in secondary\n+text Sound is away in secondary"}});
  click(button("Remove Alpha from the mixer"));
  EXPECT_EQ(names(QAccessible::ListItem), QStringList());
  EXPECT_TRUE(shown().contains("text Play audio in an app and it shows up here. in secondary"));
  ASSERT_TRUE(settle());
}

TEST_F(PanelContentTest, ShowsTheMasterVolumeOrTheCard) {
  open();
  const QSignalSpy settings(root(), SIGNAL(settingsRequested(QUrl)));
  expectChanges(
      {{[&] { clickAt(item(QAccessible::Slider, "System Output"), 1); },
        R"(-slider System Output | 0.5 | 
-text 50 percent
+slider System Output | 1 | 
+text 100 percent)"},
       {[&] {
          audio_.setDefaultDevice("headset");
          passTicks(5);
          clickAt(item(QAccessible::Slider, "System Output"), 0);
        },
        R"(-slider System Output | 1 | 
+slider System Output | 1 |  disabled
+text This output device has no adjustable master volume. in secondary)"},
       {[&] { setPreflight(2); }, R"(-text OUTPUT in secondary
-hifispeaker.fill in secondary
-text System Output
-slider System Output | 1 |  disabled
-text 100 percent
-text This output device has no adjustable master volume. in secondary
+lock.shield in accent
+text One permission to control app audio
+text To show and adjust each app's sound, Sonvel needs the sound server's permission to move and play what apps play. Nothing is recorded, saved, or sent; no restart, no driver. You can revoke it anytime. in secondary
+button Grant Audio Access | Tries whether the sound server lets Sonvel control other apps
+button Open Settings | Opens the page on how to give access to sound
+text Audio access was revoked. Audio was restored to its normal output. in secondary)"},
       {[&] { setPreflight(1); },
        R"(+text Access is currently denied. Allow “Sonvel” in the rules of the sound server, then it appears automatically. in orange)"},
       {[&] { click(button("Grant Audio Access")); },
        R"(-button Grant Audio Access | Tries whether the sound server lets Sonvel control other apps
+button Waiting… | Tries whether the sound server lets Sonvel control other apps disabled)"},
       {[&] {
          click(button("Waiting…"));
          EXPECT_EQ(consent_.openRequests(), 1U) << "a second request was made";
          click(button("Open Settings"));
          consent_.answer(false);
          ASSERT_TRUE(pumpUntil([this] { return !model_->isRequestingPermission(); }));
        },
        R"(-button Waiting… | Tries whether the sound server lets Sonvel control other apps disabled
+button Grant Audio Access | Tries whether the sound server lets Sonvel control other apps)"}});
  EXPECT_EQ(settings.count(), 1);
  const QString hint = "text This desktop has no settings for access to sound. Restart Sonvel outside of its "
                       "sandbox, or see docs/access.md. in secondary";
  expectChanges({{[&] { root()->setProperty("settingsMissing", true); }, qUtf8Printable("+" + hint)}});
  consent_.setPreflight(1);
  (void)preferences_.setBool(false, MixerViewModel::firstRunKey);
  model_ = std::make_shared<MixerViewModel>(
      MixerDependencies{actor_, mainThread_, clock_, permission_, preferences_, updates_});
  close();
  open();
  EXPECT_TRUE(shown().contains("text Welcome to Sonvel"));
}

} // namespace
} // namespace sonvel
