#include "ui/panel_test.h"

#include <QSignalSpy>

namespace sonvel {
namespace {

class RootPanelTest : public PanelTest {};

const QString kUnsupported = "This output device has no adjustable master volume.";
const QString kEmpty = "Play audio in an app and it shows up here.";

TEST_F(RootPanelTest, TellsTheModelWhenItComesAndGoes) {
  EXPECT_FALSE(MixerInspector::isPolling(*model_));
  open();
  EXPECT_TRUE(MixerInspector::isPolling(*model_));
  close();
  EXPECT_FALSE(MixerInspector::isPolling(*model_));
}

TEST_F(RootPanelTest, HasItsSize) {
  open();
  EXPECT_EQ(root()->implicitWidth(), 360);
  root()->setProperty("serverNotice", "a line in each case");
  layOut();
  const double least = root()->implicitHeight();
  for (int i = 0; i < 12; ++i)
    play("App " + std::to_string(i), "org.app" + std::to_string(i));
  passReconciliation();
  layOut();
  EXPECT_EQ(root()->implicitHeight() - least, 460 - 320) << "the heights of the scroll area";
}

TEST_F(RootPanelTest, ShowsAnEmptyListWithoutSayingItTwice) {
  open();
  EXPECT_EQ(names(QAccessible::StaticText),
            QStringList({"Sonvel", "OUTPUT", "System Output", "50 percent", "APPS", kEmpty}));
  EXPECT_EQ(names(QAccessible::Button),
            QStringList({"Reset all", "Everything → Speakers", "Check for Updates", "Quit"}));
}

TEST_F(RootPanelTest, ShowsTheCardInPlaceOfTheMasterVolumeWithoutPermission) {
  consent_.setPreflight(1);
  open();
  EXPECT_FALSE(shows("OUTPUT"));
  EXPECT_TRUE(names(QAccessible::Slider).isEmpty());
  EXPECT_TRUE(shows("Welcome to Sonvel"));
  EXPECT_TRUE(shows("APPS"));
  consent_.setPreflight(0);
  pass(kMonitorInterval);
  EXPECT_TRUE(shows("OUTPUT"));
  EXPECT_FALSE(shows("Welcome to Sonvel"));
}

TEST_F(RootPanelTest, ShowsAndSetsTheMasterVolume) {
  open();
  auto* slider = item(QAccessible::Slider, "System Output");
  EXPECT_EQ(slider->property("value").toDouble(), 0.5);
  EXPECT_FALSE(shows(kUnsupported));
  for (const auto& [volume, text] :
       {std::pair{0.42, "42 percent"}, {1.0, "100 percent"}, {0.0, "0 percent"}}) {
    model_->setMaster(volume);
    EXPECT_EQ(slider->property("value").toDouble(), volume);
    EXPECT_TRUE(shows(text)) << text;
  }
  QTest::mouseClick(view_.get(), Qt::LeftButton, {}, handlePlace(slider, 0.25));
  EXPECT_NEAR(model_->masterVolume(), 0.25, 0.01);
}

TEST_F(RootPanelTest, DisablesAMasterVolumeThatTheDeviceLacks) {
  audio_.setDefaultDevice("headset");
  open();
  auto* slider = item(QAccessible::Slider, "System Output");
  EXPECT_FALSE(slider->isEnabled());
  EXPECT_TRUE(shows(kUnsupported));
  const double before = model_->masterVolume();
  QTest::mouseClick(view_.get(), Qt::LeftButton, {}, handlePlace(slider, 0.25));
  EXPECT_EQ(model_->masterVolume(), before);
}

TEST_F(RootPanelTest, ShowsTheStatusOrWhatIsWrongWithSound) {
  openWith({"Alpha", "Beta"});
  EXPECT_TRUE(shows("2 playing"));
  EXPECT_FALSE(shows(kEmpty));
  root()->setProperty("serverNotice", "The sound service does not answer.");
  EXPECT_FALSE(shows("2 playing"));
  EXPECT_TRUE(shows("The sound service does not answer."));
  root()->setProperty("serverNotice", "");
  EXPECT_TRUE(shows("2 playing"));
}

TEST_F(RootPanelTest, ItsButtonsDoWhatTheySay) {
  updates_.available = true;
  model_ = std::make_shared<MixerViewModel>(
      MixerDependencies{actor_, mainThread_, clock_, permission_, preferences_, updates_});
  openWith({"Alpha", "Beta"});
  const QSignalSpy quit(root(), SIGNAL(quitRequested()));
  model_->setGain(150, row("org.Alpha"));
  model_->toggleMute(row("org.Beta"));
  model_->setOutput(std::optional<std::string>("headset"), row("org.Beta"));

  click(item(QAccessible::Button, "Reset all"));
  EXPECT_EQ(row("org.Alpha")->gainPercent(), 100);
  EXPECT_FALSE(row("org.Beta")->muted());
  EXPECT_EQ(row("org.Beta")->outputUID(), "headset");
  click(item(QAccessible::Button, "Everything → Speakers"));
  ASSERT_TRUE(settle());
  EXPECT_EQ(row("org.Beta")->outputUID(), std::nullopt);
  click(item(QAccessible::Button, "Check for Updates"));
  EXPECT_EQ(updates_.checks, 1);
  EXPECT_EQ(quit.count(), 0);
  click(item(QAccessible::Button, "Quit"));
  EXPECT_EQ(quit.count(), 1);
}

TEST_F(RootPanelTest, AlwaysQuitsButChecksForUpdatesOnlyIfThereCanBeAny) {
  open();
  EXPECT_FALSE(item(QAccessible::Button, "Check for Updates")->isEnabled());
  EXPECT_TRUE(item(QAccessible::Button, "Quit")->isEnabled());
}

} // namespace
} // namespace sonvel
