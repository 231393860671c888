#include "ui/panel_test.h"

namespace sonvel {
namespace {

class RoutingMenuTest : public PanelTest {
 protected:
  void openMenu() { click(item(QAccessible::Button, "Output for Alpha")); }

  QStringList items() const { return names(QAccessible::MenuItem); }

  QString symbolOf(const QString& name) const {
    return item(QAccessible::MenuItem, name)->property("symbol").toString();
  }

  QColor labelColor() const {
    return item(QAccessible::Button, "Output for Alpha")->property("labelColor").value<QColor>();
  }

  QString output() const {
    return find(QAccessible::Button, "Output for Alpha")->text(QAccessible::Description);
  }
};

TEST_F(RoutingMenuTest, RoutesToADeviceAndBack) {
  openWith({"Alpha"});
  EXPECT_EQ(labelColor(), theme_->secondary());
  openMenu();
  EXPECT_EQ(items(), QStringList({"Follow System Output", "Speakers", "Headset"}));
  EXPECT_EQ(symbolOf("Follow System Output"), "checkmark");
  EXPECT_EQ(symbolOf("Headset"), "hifispeaker");

  click(item(QAccessible::MenuItem, "Headset"));
  EXPECT_EQ(row("org.Alpha")->outputUID(), "headset");
  EXPECT_TRUE(items().isEmpty());
  EXPECT_EQ(output(), "Headset");
  EXPECT_EQ(labelColor(), theme_->accent());

  openMenu();
  EXPECT_EQ(symbolOf("Follow System Output"), "");
  EXPECT_EQ(symbolOf("Speakers"), "hifispeaker");
  EXPECT_EQ(symbolOf("Headset"), "checkmark");
  click(item(QAccessible::MenuItem, "Follow System Output"));
  EXPECT_EQ(row("org.Alpha")->outputUID(), std::nullopt);
  EXPECT_EQ(output(), "System Output");
}

TEST_F(RoutingMenuTest, NamesADeviceThatHasGone) {
  openWith({"Alpha"});
  model_->setOutput(std::optional<std::string>("gone"), row("org.Alpha"));
  EXPECT_EQ(output(), "Device");
}

TEST_F(RoutingMenuTest, HoldsOnlyTheSystemOutputWithoutDevices) {
  audio_.removeDevice("speakers");
  audio_.removeDevice("headset");
  openWith({"Alpha"});
  openMenu();
  EXPECT_EQ(items(), QStringList({"Follow System Output"}));
  EXPECT_EQ(names(QAccessible::Separator).size(), 1);
}

TEST_F(RoutingMenuTest, IsWorkedByTheKeyboard) {
  openWith({"Alpha"});
  ASSERT_TRUE(tabTo(slider("Alpha")));
  press(Qt::Key_Space);
  ASSERT_EQ(items().size(), 3);
  press(Qt::Key_Down);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(row("org.Alpha")->outputUID(), "speakers");
  EXPECT_TRUE(items().isEmpty());
  EXPECT_EQ(view_->activeFocusItem(), slider("Alpha")) << "the focus was to come back";

  ASSERT_TRUE(tabTo(item(QAccessible::Button, "Output for Alpha")));
  press(Qt::Key_Space);
  ASSERT_EQ(items().size(), 3);
  press(Qt::Key_Escape);
  EXPECT_TRUE(items().isEmpty());
  EXPECT_EQ(row("org.Alpha")->outputUID(), "speakers");
}

TEST_F(RoutingMenuTest, ClosesWhenItsApplicationPauses) {
  const auto process = play("Alpha", "org.Alpha");
  open();
  openMenu();
  ASSERT_EQ(items().size(), 3);
  audio_.removeProcess(process);
  passReconciliation();
  passReconciliation();
  EXPECT_TRUE(items().isEmpty());
}

TEST_F(RoutingMenuTest, StaysWithinASmallWindow) {
  for (int i = 0; i < 30; ++i)
    audio_.addDevice(
        {.uid = "device" + std::to_string(i),
         .name = "A device whose name is far too long for a menu in so small a panel " + std::to_string(i)});
  openWith({"Alpha"});
  view_->resize(360, 300);
  openMenu();
  auto* last = item(QAccessible::MenuItem, items().last());
  auto* list = last->parentItem()->parentItem();
  EXPECT_TRUE(QRectF(0, 0, 360, 300).contains(place(list)));
  for (int i = 0; i < 40; ++i)
    press(Qt::Key_Down);
  EXPECT_TRUE(last->property("highlighted").toBool());
  EXPECT_TRUE(pumpUntil([&] { return place(list).intersects(place(last)); }));
  press(Qt::Key_Return);
  EXPECT_EQ(row("org.Alpha")->outputUID(), "device29");
}

} // namespace
} // namespace sonvel
