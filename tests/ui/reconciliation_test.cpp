// What the user holds while the list changes around it stays in their hand.

#include "ui/panel_test.h"

namespace sonvel {
namespace {

class HeldControlTest : public PanelTest {
 protected:
  void pressAt(QQuickItem* slider, double value) {
    QTest::mousePress(view_.get(), Qt::LeftButton, {}, handlePlace(slider, value));
  }

  void moveTo(QQuickItem* slider, double value) { QTest::mouseMove(view_.get(), handlePlace(slider, value)); }

  void releaseAt(QQuickItem* slider, double value) {
    QTest::mouseRelease(view_.get(), Qt::LeftButton, {}, handlePlace(slider, value));
  }

  /// Rows come in before, and one goes.
  void changeTheList() {
    play("Aardvark", "org.Aardvark");
    play("Aaa", "org.Aaa");
    model_->dismissChannel(row("org.Beta"));
    passReconciliation();
    ASSERT_EQ(rowNames(), std::vector<std::string>({"Aaa", "Aardvark", "Beta", "Middle", "Zeta"}));
  }
};

TEST_F(HeldControlTest, ASliderStaysInTheHandAndFollowsTheModelAfterwards) {
  openWith({"Middle", "Beta", "Zeta"});
  auto* held = slider("Middle");
  auto* channel = row("org.Middle");
  pressAt(held, 150);
  moveTo(held, 160);
  EXPECT_NEAR(channel->gainPercent(), 160, 1);
  const double before = place(held).y();

  changeTheList();
  ASSERT_EQ(slider("Middle"), held);
  ASSERT_NE(place(held).y(), before) << "the row was to move under the hand";
  channel->setGainPercent(20);
  EXPECT_NEAR(held->property("value").toDouble(), 160, 1) << "the model must not move it";
  moveTo(held, 60);
  EXPECT_NEAR(channel->gainPercent(), 60, 1);
  channel->setGainPercent(20);
  releaseAt(held, 60);
  EXPECT_FALSE(held->property("pressed").toBool());
  EXPECT_EQ(held->property("value"), 20);
  channel->setGainPercent(120);
  EXPECT_EQ(held->property("value"), 120);
}

TEST_F(HeldControlTest, TheMasterSliderStaysInTheHand) {
  open();
  auto* held = item(QAccessible::Slider, "System Output");
  pressAt(held, 0.9);
  EXPECT_NEAR(model_->masterVolume(), 0.9, 0.01);
  ASSERT_TRUE(settle());
  actor_->call([](HardwareController& controller) { controller.setMasterVolume(0.1F); }).get();
  passTicks(5);
  ASSERT_NEAR(model_->masterVolume(), 0.1, 1e-6);
  EXPECT_NEAR(held->property("value").toDouble(), 0.9, 0.01);
  releaseAt(held, 0.9);
  EXPECT_NEAR(held->property("value").toDouble(), 0.1, 1e-6);
}

TEST_F(HeldControlTest, AReleaseMovesNothing) {
  openWith({"Middle"});
  auto* held = slider("Middle");
  pressAt(held, 150);
  const int held150 = row("org.Middle")->gainPercent();
  releaseAt(held, 150);
  EXPECT_EQ(row("org.Middle")->gainPercent(), held150);
  EXPECT_EQ(held->property("value"), held150);
}

TEST_F(HeldControlTest, ARowScrolledOutOfSightKeepsItsSlider) {
  std::vector<std::string> names{"Aaaa"};
  for (int i = 10; i < 30; ++i)
    names.push_back("App " + std::to_string(i));
  openWith(names);
  auto* held = slider("Aaaa");
  pressAt(held, 150);
  auto* area = itemNamed("scrollArea");
  area->setProperty("contentY", 900);
  passReconciliation();
  moveTo(held, 40);
  EXPECT_NEAR(row("org.Aaaa")->gainPercent(), 40, 1);
  releaseAt(held, 40);
}

TEST_F(HeldControlTest, TheFocusStaysOnItsRow) {
  openWith({"Middle", "Beta", "Zeta"});
  auto* focused = slider("Middle");
  ASSERT_TRUE(tabTo(focused));
  changeTheList();
  EXPECT_EQ(view_->activeFocusItem(), focused);
  EXPECT_TRUE(focused->property("visualFocus").toBool());
  press(Qt::Key_M);
  EXPECT_TRUE(row("org.Middle")->muted());
}

TEST_F(HeldControlTest, AMenuStaysOpen) {
  openWith({"Middle", "Beta", "Zeta"});
  click(item(QAccessible::Button, "Output for Middle"));
  auto* headset = item(QAccessible::MenuItem, "Headset");
  ASSERT_NE(headset, nullptr);
  changeTheList();
  ASSERT_EQ(item(QAccessible::MenuItem, "Headset"), headset);
  click(headset);
  EXPECT_EQ(row("org.Middle")->outputUID(), "headset");
}

} // namespace
} // namespace sonvel
