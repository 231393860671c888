// The panel's texts and appearance in every state.

#include "ui/panel_test.h"
#include "ui/presentation/panel_text.h"
#include "ui/translations/translations.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <ranges>

namespace sonvel {
namespace {

constexpr auto kOneApplication = R"(slider.vertical.3
text Sonvel
text OUTPUT in secondary
hifispeaker.fill in secondary
text System Output
slider System Output | 0.5 | 50 percent
text 50 percent | 50
text APPS in secondary
row Alpha
icon/500/org.Alpha/org.Alpha/0
text Alpha
text 100 percent | 100
button Remove Alpha from the mixer | Remove from list
xmark.circle.fill in tertiary
button Mute Alpha | Mute
speaker.wave.2.fill
slider Alpha volume | 100 | 100 percent, Adjusts this app's output volume
meter 0
button Output for Alpha | System Output
arrow.triangle.branch in secondary
button Reset all
arrow.uturn.backward
button Everything → Speakers
hifispeaker
text 1 playing in secondary
button Check for Updates | Updates are not configured in this build. disabled
button Quit)";

class PanelContentTest : public PanelTest {
 protected:
  /// Compares what is new in the panel since the last call, one line each: texts with their colour, controls
  /// with value and description, symbols, icons, meters, and what is faded or disabled.
  void expectNew(const char* lines) {
    QStringList shown;
    for (auto* item : items())
      if (const auto line = describe(item); !line.isEmpty())
        shown.append(line + (item->opacity() < 1 ? QString(" at %1").arg(item->opacity()) : QString()) +
                     (item->isEnabled() ? "" : " disabled"));
    auto fresh = shown;
    for (const auto& line : std::exchange(shown_, shown))
      fresh.removeOne(line);
    EXPECT_EQ(fresh.join('\n').toStdString(), lines);
  }

 private:
  QString describe(QQuickItem* item) const {
    static const QHash<int, QString> kKinds{{QAccessible::StaticText, "text "},
                                            {QAccessible::Button, "button "},
                                            {QAccessible::Slider, "slider "},
                                            {QAccessible::ListItem, "row "},
                                            {QAccessible::MenuItem, "item "}};
    if (item->objectName() == "meter") return "meter " + item->property("shown").toString();
    const auto source = item->property("source").toUrl();
    if (source.host() == "app-icon") return "icon" + source.path();
    if (source.host() == "symbol") return source.path().section('/', 1, 1) + colorName(item->parentItem());
    const auto* seen = accessible(item);
    if (seen == nullptr || !kKinds.contains(seen->role())) return {};
    QString line = kKinds[seen->role()] + seen->text(QAccessible::Name) + colorName(item);
    for (const auto& more : {item->property("value").toString(), seen->text(QAccessible::Description)})
      if (!more.isEmpty()) line += " | " + more;
    return line;
  }

  /// Empty for the primary colour.
  QString colorName(const QQuickItem* item) const {
    const auto color = item->property("color").value<QColor>();
    for (const auto* name : {"secondary", "tertiary", "accent", "orange", "red"})
      if (theme_.property(name).value<QColor>() == color) return QString(" in ") + name;
    return {};
  }

  QStringList shown_;
};

TEST_F(PanelContentTest, ShowsAnApplicationInEachState) {
  const auto process = play("Alpha", "org.Alpha");
  open();
  expectNew(kOneApplication);
  const QSignalSpy pressed(button("Check for Updates"), SIGNAL(clicked()));
  accessible(button("Check for Updates"))
      ->actionInterface()
      ->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_EQ(pressed.count(), 0) << "it is disabled";
  auto* const alpha = row("org.Alpha");
  model_->setGain(150, alpha);
  alpha->setLevel(0.5F);
  click(button("Output for Alpha"));
  click(item(QAccessible::MenuItem, "Headset"));
  ASSERT_TRUE(settle());
  expectNew(R"(bolt.fill in orange
text 150 percent | 150
slider Alpha volume | 150 | 150 percent, Adjusts this app's output volume
meter 0.5
button Output for Alpha | Headset
headphones in accent)");
  click(button("Mute Alpha"));
  alpha->setPlayback({.playingUID = "speakers", .isOutputConnected = false, .isPartial = true});
  expectNew(R"(text 150 percent in secondary | 150
button Unmute Alpha | Unmute
speaker.slash.fill in secondary
slider Alpha volume | 150 | 150 percent, Adjusts this app's output volume at 0.4
meter 0
text Headset is not connected. Until it is, you hear this app on Speakers. Only part of this app’s sound can be controlled. in secondary)");
  click(button("Output for Alpha"));
  expectNew(R"(item Follow System Output
item Speakers
hifispeaker
item Headset
checkmark)");
  click(item(QAccessible::MenuItem, "Follow System Output"));
  ASSERT_TRUE(settle());
  alpha->setLastError(CallFailure{"Tap <b>failed</b> (OSStatus -50)"});
  expectNew(R"(text Audio control error, Tap <b>failed</b> (OSStatus -50)
button Output for Alpha | System Output
arrow.triangle.branch in secondary)");
  click(button("Output for Alpha"));
  ASSERT_TRUE(settle());
  alpha->setLastError(std::nullopt);
  stopPlaying(process);
  expectNew(R"(row Alpha at 0.9
icon/500/org.Alpha/org.Alpha/70 at 0.5
text Alpha in secondary
text idle in secondary
meter 0 at 0.25
text Paused — keeps this volume when it plays again in secondary
text 0 playing · 1 idle in secondary)");
  EXPECT_TRUE(names(QAccessible::MenuItem).isEmpty()) << "a menu without its button";
  root()->setProperty("serverNotice", "Sound is away");
  click(button("Remove Alpha from the mixer"));
  expectNew(R"(speaker.wave.2 in secondary
text Play audio in an app and it shows up here. in secondary
text Sound is away in secondary)");
  ASSERT_TRUE(settle());
}

TEST_F(PanelContentTest, ShowsTheMasterVolumeOrTheCard) {
  const auto setPreflight = [this](int preflight) {
    consent_.setPreflight(preflight);
    pass(kMonitorInterval);
  };
  play("Alpha", "org.Alpha");
  open();
  expectNew(kOneApplication);
  clickAt(master(), 1);
  audio_.setDefaultDevice("headset");
  passTicks(5);
  clickAt(master(), 0);
  expectNew(R"(slider System Output | 1 | 100 percent disabled
text This output device has no adjustable master volume. in secondary
text 100 percent | 100)");
  setPreflight(2);
  expectNew(R"(lock.shield in accent
text One permission to control app audio
text To show and adjust each app's sound, Sonvel needs the sound server's permission to move and play what apps play. Nothing is recorded, saved, or sent; no restart, no driver. You can revoke it anytime. in secondary
button Grant Audio Access | Tries whether the sound server lets Sonvel control other apps
button Open Settings | Opens the page on how to give access to sound
meter 0 at 0.25
text Audio access was revoked. Audio was restored to its normal output. in secondary)");
  setPreflight(1);
  click(button("Grant Audio Access"));
  expectNew(
      R"(button Waiting… | Tries whether the sound server lets Sonvel control other apps disabled
text Access is currently denied. Allow “Sonvel” in the rules of the sound server, then it appears automatically. in orange)");
  click(button("Waiting…"));
  EXPECT_EQ(consent_.openRequests(), 1U) << "a second request was made";
  const QSignalSpy settings(root(), SIGNAL(settingsRequested(QUrl)));
  click(button("Open Settings"));
  EXPECT_EQ(settings.count(), 1);
  root()->setProperty("settingsMissing", true);
  expectNew("text This desktop has no settings for access to sound. Restart Sonvel outside of its sandbox, "
            "or see docs/access.md. in secondary");
  consent_.answer(false);
  ASSERT_TRUE(settle());
}

TEST_F(PanelContentTest, SaysWhileARemovedApplicationCouldNotBeGivenBack) {
  const auto process = play("Alpha", "org.Alpha");
  open();
  audio_.fail({.call = simulated::Call::destroyProcessTap, .status = -50});
  click(button("Remove Alpha from the mixer"));
  ASSERT_TRUE(settle());
  const auto retrying =
      QString("Audio restoration for %1 is retrying: AudioHardwareDestroyProcessTap (OSStatus -50)");
  EXPECT_TRUE(names(QAccessible::StaticText).contains(retrying.arg(process)));
  pass(std::chrono::seconds(2));
  EXPECT_FALSE(names(QAccessible::StaticText).contains(retrying.arg(process)));
}

TEST_F(PanelContentTest, ControlsAreThoseThatTheDocumentsList) {
  QStringList lines;
  const auto addNew = [&] {
    static const QHash<int, QString> kKinds{{QAccessible::Slider, "slider"},
                                            {QAccessible::Button, "button"},
                                            {QAccessible::MenuItem, "menu item"}};
    for (const auto* seen : items() | std::views::transform([](auto* item) { return accessible(item); }))
      if (seen != nullptr && kKinds.contains(seen->role())) {
        const auto help = seen->text(QAccessible::Description);
        const auto line = QString("- %1 **%2**").arg(kKinds[seen->role()], seen->text(QAccessible::Name)) +
                          (help.isEmpty() ? "" : ": " + help);
        if (!lines.contains(line)) lines += line;
      }
  };
  openWith({"Music"});
  addNew();
  click(button("Output for Music"));
  addNew();
  press(Qt::Key_Escape);
  root()->setProperty("isWithoutIcon", true);
  addNew();
  root()->setProperty("isClosingExplained", true);
  consent_.setPreflight(1);
  pass(kMonitorInterval);
  addNew();
  ASSERT_TRUE(settle());
  std::puts(qPrintable(lines.join('\n')));
  QFile page(SONVEL_CONTROLS);
  ASSERT_TRUE(page.open(QIODevice::ReadOnly));
  EXPECT_EQ(lines, QString::fromUtf8(page.readAll()).split('\n').filter(QRegularExpression("^- ")));
}

TEST(PanelTextTest, SaysWhatTheOtherTestsDoNotShow) {
  EXPECT_EQ(PanelText::number(1200), "1200") << "digits are grouped";
  EXPECT_EQ(
      PanelText::statusLine("", {.event = MixerStatus::Event::restorationFails, .failures = "A; B"}, "C", 0),
      "Audio access was revoked. Audio restoration is retrying: A; B");
  {
    const Translations words(QLocale("de_AT"));
    const MixerStatus status{.event = MixerStatus::Event::appsListed, .playing = 1, .idle = 2};
    EXPECT_EQ(PanelText::statusLine("", status, "", 3), QString("1 spielt \u00B7 2 inaktiv"));
  }
  EXPECT_EQ(PanelText::errorText("It failed (OSStatus 560227702)", status::kBadDevice),
            "The device is not there. It failed (OSStatus 560227702)");
  const AudioApp app{.pid = 7, .bundleID = "org.a/b c", .name = "A", .parentBundleID = "org.parent"};
  EXPECT_EQ(PanelText::appIcon(app, true).toEncoded(), "image://app-icon/7/org.a%2Fb%20c/org.parent/0");
}

} // namespace
} // namespace sonvel
