#include "ui/panel_test.h"

namespace sonvel {
namespace {

class KeyboardTest : public PanelTest {
 protected:
  QString focused() const {
    auto* focused = view_->activeFocusItem();
    return focused != nullptr ? accessible(focused)->text(QAccessible::Name) : QString();
  }
};

TEST_F(KeyboardTest, ReachesEveryControlInReadingOrder) {
  openWith({"Alpha", "Beta"});
  QStringList order;
  for (press(Qt::Key_Tab); !order.contains(focused()); press(Qt::Key_Tab)) {
    EXPECT_TRUE(view_->activeFocusItem()->property("visualFocus").toBool()) << focused().toStdString();
    order.append(focused());
  }
  EXPECT_EQ(order, QStringList({"System Output", "Remove Alpha from the mixer", "Mute Alpha", "Alpha volume",
                                "Output for Alpha", "Remove Beta from the mixer", "Mute Beta", "Beta volume",
                                "Output for Beta", "Reset all", "Everything → Speakers", "Quit"}));
}

TEST_F(KeyboardTest, APressOfTheMouseShowsNoRing) {
  openWith({"Alpha"});
  click(slider("Alpha"));
  EXPECT_EQ(view_->activeFocusItem(), slider("Alpha"));
  EXPECT_FALSE(slider("Alpha")->property("visualFocus").toBool());
}

TEST_F(KeyboardTest, MovesASlider) {
  struct Case {
    Qt::Key key;
    int gain;
  };

  openWith({"Alpha"});
  ASSERT_TRUE(tabTo(slider("Alpha")));
  for (const auto& each : {Case{Qt::Key_Right, 101},
                           {Qt::Key_Up, 102},
                           {Qt::Key_Left, 101},
                           {Qt::Key_Down, 100},
                           {Qt::Key_PageUp, 120},
                           {Qt::Key_PageDown, 100},
                           {Qt::Key_Home, 0},
                           {Qt::Key_PageDown, 0},
                           {Qt::Key_End, 200},
                           {Qt::Key_Right, 200}}) {
    press(each.key);
    EXPECT_EQ(row("org.Alpha")->gainPercent(), each.gain) << each.key;
  }
  ASSERT_TRUE(tabTo(item(QAccessible::Slider, "System Output")));
  press(Qt::Key_Right);
  EXPECT_NEAR(model_->masterVolume(), 0.51, 1e-9);
  press(Qt::Key_PageDown);
  EXPECT_NEAR(model_->masterVolume(), 0.41, 1e-9);
}

TEST_F(KeyboardTest, MutesAndRemovesTheFocusedRow) {
  openWith({"Alpha", "Beta", "Gamma"});
  ASSERT_TRUE(tabTo(slider("Beta")));
  press(Qt::Key_M);
  EXPECT_TRUE(row("org.Beta")->muted());
  press(Qt::Key_M, Qt::ControlModifier);
  EXPECT_TRUE(row("org.Beta")->muted());
  EXPECT_FALSE(row("org.Alpha")->muted());

  press(Qt::Key_Delete);
  ASSERT_EQ(rowNames(), std::vector<std::string>({"Alpha", "Gamma"}));
  EXPECT_EQ(focused(), "Gamma volume") << "the next row was to have the focus";
  press(Qt::Key_Delete);
  EXPECT_EQ(focused(), "Alpha volume");
  press(Qt::Key_Delete);
  EXPECT_TRUE(rowNames().empty());
  ASSERT_TRUE(settle());
}

TEST_F(KeyboardTest, PressesButtons) {
  openWith({"Alpha"});
  ASSERT_TRUE(tabTo(item(QAccessible::Button, "Mute Alpha")));
  press(Qt::Key_Space);
  EXPECT_TRUE(row("org.Alpha")->muted());
  press(Qt::Key_Return);
  EXPECT_FALSE(row("org.Alpha")->muted());
  EXPECT_TRUE(names(QAccessible::MenuItem).isEmpty()) << "Space was the button's";
}

TEST_F(KeyboardTest, ScrollsToWhatHasTheFocus) {
  std::vector<std::string> names;
  for (int i = 10; i < 50; ++i)
    names.push_back("App " + std::to_string(i));
  openWith(names);
  const auto area = place(itemNamed("scrollArea"));
  for (const char* name : {"App 49", "App 10"}) {
    ASSERT_TRUE(tabTo(slider(name)));
    EXPECT_TRUE(area.contains(place(slider(name)))) << name;
  }
}

} // namespace
} // namespace sonvel
