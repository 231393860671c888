// What the user does with keys, pointer and assistive technologies, also while the list changes.

#include "ui/panel_test.h"

#include <QSignalSpy>

namespace sonvel {
namespace {

class PanelInputTest : public PanelTest {
 protected:
  QString focused() const {
    const auto* seen = accessible(view_->activeFocusItem());
    return seen != nullptr ? seen->text(QAccessible::Name) : QString();
  }

  void assistivePress(const QString& name) {
    accessible(button(name))->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  }
};

TEST_F(PanelInputTest, TabReachesEveryControlInReadingOrder) {
  openWith({"Alpha", "Beta"});
  QStringList order;
  for (press(Qt::Key_Tab); !order.contains(focused()); press(Qt::Key_Tab)) {
    EXPECT_TRUE(view_->activeFocusItem()->property("visualFocus").toBool()) << focused().toStdString();
    order.append(focused());
  }
  EXPECT_EQ(order, QStringList({"System Output", "Remove Alpha from the mixer", "Mute Alpha", "Alpha volume",
                                "Output for Alpha", "Remove Beta from the mixer", "Mute Beta", "Beta volume",
                                "Output for Beta", "Reset all", "Everything → Speakers", "Quit"}));
  click(slider("Alpha"));
  EXPECT_EQ(view_->activeFocusItem(), slider("Alpha"));
  EXPECT_FALSE(slider("Alpha")->property("visualFocus").toBool()) << "the pointer needs no ring";
}

TEST_F(PanelInputTest, KeysMoveASlider) {
  openWith({"Alpha"});
  ASSERT_TRUE(tabTo(slider("Alpha")));
  using KeyCase = std::pair<Qt::Key, int>;
  for (const auto& [key, gain] : {KeyCase{Qt::Key_Right, 101},
                                  {Qt::Key_Up, 102},
                                  {Qt::Key_Left, 101},
                                  {Qt::Key_Down, 100},
                                  {Qt::Key_PageUp, 120},
                                  {Qt::Key_Home, 0},
                                  {Qt::Key_PageDown, 0},
                                  {Qt::Key_End, 200}}) {
    press(key);
    EXPECT_EQ(row("org.Alpha")->gainPercent(), gain) << key;
  }
  ASSERT_TRUE(tabTo(item(QAccessible::Slider, "System Output")));
  press(Qt::Key_Right);
  press(Qt::Key_PageDown);
  EXPECT_NEAR(model_->masterVolume(), 0.41, 1e-9);
}

TEST_F(PanelInputTest, KeysWorkTheFocusedRow) {
  openWith({"Alpha", "Beta", "Gamma"});
  ASSERT_TRUE(tabTo(slider("Beta")));
  press(Qt::Key_M);
  press(Qt::Key_M, Qt::ControlModifier);
  EXPECT_TRUE(row("org.Beta")->muted());
  EXPECT_FALSE(row("org.Alpha")->muted());

  press(Qt::Key_Space);
  ASSERT_EQ(names(QAccessible::MenuItem), QStringList({"Follow System Output", "Speakers", "Headset"}));
  press(Qt::Key_Down);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(row("org.Beta")->outputUID(), "speakers");
  EXPECT_EQ(view_->activeFocusItem(), slider("Beta")) << "the menu did not give the focus back";
  press(Qt::Key_Space);
  press(Qt::Key_Escape);
  EXPECT_TRUE(names(QAccessible::MenuItem).isEmpty());

  ASSERT_TRUE(tabTo(button("Mute Alpha")));
  press(Qt::Key_Return);
  EXPECT_TRUE(row("org.Alpha")->muted());

  for (const auto* next : {"Beta volume", "Gamma volume", ""}) {
    press(Qt::Key_Delete);
    EXPECT_EQ(focused(), next) << "the next row did not get the focus";
  }
  EXPECT_TRUE(rowNames().empty());
  ASSERT_TRUE(settle());
}

TEST_F(PanelInputTest, ScrollsToTheFocus) {
  std::vector<std::string> names;
  for (int i = 10; i < 50; ++i)
    names.push_back("App " + std::to_string(i));
  openWith(names);
  for (const char* name : {"App 49", "App 10"}) {
    ASSERT_TRUE(tabTo(slider(name)));
    EXPECT_TRUE(place(itemNamed("scrollArea")).contains(place(slider(name)))) << name;
  }
}

TEST_F(PanelInputTest, AssistiveTechnologiesDoWhatPointersDo) {
  openWith({"Alpha"});
  accessible(slider("Alpha"))->valueInterface()->setCurrentValue(37.4);
  EXPECT_EQ(row("org.Alpha")->gainPercent(), 37);
  EXPECT_EQ(remembered().at("org.Alpha").first, 37);
  const auto* const value = accessible(slider("Alpha"))->valueInterface();
  EXPECT_EQ(value->minimumValue().toDouble(), 0);
  EXPECT_EQ(value->maximumValue().toDouble(), 200);
  accessible(item(QAccessible::Slider, "System Output"))->valueInterface()->setCurrentValue(0.8);
  EXPECT_EQ(model_->masterVolume(), 0.8);
  assistivePress("Mute Alpha");
  EXPECT_TRUE(row("org.Alpha")->muted());
  assistivePress("Output for Alpha");
  EXPECT_EQ(names(QAccessible::MenuItem).size(), 3);
}

TEST_F(PanelInputTest, ButtonsOfTheWholePanel) {
  updates_.available = true;
  model_ = std::make_shared<MixerViewModel>(
      MixerDependencies{actor_, mainThread_, clock_, permission_, preferences_, updates_});
  openWith({"Alpha", "Beta"});
  const QSignalSpy quit(root(), SIGNAL(quitRequested()));
  model_->setGain(150, row("org.Alpha"));
  model_->toggleMute(row("org.Beta"));
  model_->setOutput(std::optional<std::string>("headset"), row("org.Beta"));
  click(button("Reset all"));
  EXPECT_EQ(row("org.Alpha")->gainPercent(), 100);
  EXPECT_FALSE(row("org.Beta")->muted());
  EXPECT_EQ(row("org.Beta")->outputUID(), "headset");
  click(button("Everything → Speakers"));
  ASSERT_TRUE(settle());
  EXPECT_EQ(row("org.Beta")->outputUID(), std::nullopt);
  click(button("Check for Updates"));
  EXPECT_EQ(updates_.checks, 1);
  click(button("Quit"));
  EXPECT_EQ(quit.count(), 1);
  EXPECT_TRUE(MixerInspector::isPanelOpen(*model_));
  close();
  EXPECT_FALSE(MixerInspector::isPanelOpen(*model_));
}

/// The user holds something while the list changes.
class HeldControlTest : public PanelTest {
 protected:
  HeldControlTest() {
    for (const auto* name : {"Middle", "Beta", "Zeta"})
      play(name, std::string("org.") + name);
  }

  void hold(QQuickItem* slider, double value) {
    QTest::mousePress(view_.get(), Qt::LeftButton, {}, handlePlace(slider, value));
  }

  void moveTo(QQuickItem* slider, double value) { QTest::mouseMove(view_.get(), handlePlace(slider, value)); }

  void release(QQuickItem* slider, double value) {
    QTest::mouseRelease(view_.get(), Qt::LeftButton, {}, handlePlace(slider, value));
  }

  /// Rows are inserted before "Middle", and one is removed.
  void changeTheList() {
    play("Aardvark", "org.Aardvark");
    play("Aaa", "org.Aaa");
    model_->dismissChannel(row("org.Beta"));
    passReconciliation();
    ASSERT_EQ(rowNames(), std::vector<std::string>({"Aaa", "Aardvark", "Beta", "Middle", "Zeta"}));
  }
};

TEST_F(HeldControlTest, ASliderFollowsTheHandAndThenTheModel) {
  open();
  auto* held = slider("Middle");
  auto* channel = row("org.Middle");
  hold(held, 150);
  moveTo(held, 160);
  EXPECT_NEAR(channel->gainPercent(), 160, 1);
  const double before = place(held).y();
  changeTheList();
  ASSERT_EQ(slider("Middle"), held);
  ASSERT_NE(place(held).y(), before);
  channel->setGainPercent(20);
  EXPECT_NEAR(held->property("value").toDouble(), 160, 1) << "the model moved it";
  itemNamed("scrollArea")->setProperty("contentY", 900); // out of sight
  moveTo(held, 60);
  EXPECT_NEAR(channel->gainPercent(), 60, 1);
  release(held, 60);
  EXPECT_NEAR(channel->gainPercent(), 60, 1) << "the release moved it";
  channel->setGainPercent(120);
  EXPECT_EQ(held->property("value"), 120);
}

TEST_F(HeldControlTest, TheMasterSliderFollowsTheHand) {
  open();
  auto* held = item(QAccessible::Slider, "System Output");
  hold(held, 0.9);
  EXPECT_NEAR(model_->masterVolume(), 0.9, 0.01);
  ASSERT_TRUE(settle());
  actor_->call([](HardwareController& controller) { controller.setMasterVolume(0.1F); }).get();
  passTicks(5);
  EXPECT_NEAR(held->property("value").toDouble(), 0.9, 0.01);
  release(held, 0.9);
  EXPECT_NEAR(held->property("value").toDouble(), 0.1, 1e-6);
}

TEST_F(HeldControlTest, FocusAndMenuStayOnTheirRow) {
  open();
  auto* focused = slider("Middle");
  ASSERT_TRUE(tabTo(focused));
  changeTheList();
  EXPECT_EQ(view_->activeFocusItem(), focused);
  EXPECT_TRUE(focused->property("visualFocus").toBool());
  click(button("Output for Middle"));
  auto* headset = item(QAccessible::MenuItem, "Headset");
  play("Abc", "org.Abc");
  passReconciliation();
  ASSERT_EQ(item(QAccessible::MenuItem, "Headset"), headset);
  click(headset);
  EXPECT_EQ(row("org.Middle")->outputUID(), "headset");
}

} // namespace
} // namespace sonvel
