// Keyboard and pointer input, also while the list changes, and the layout.

#include "ui/panel_test.h"
#include "ui/translations/translations.h"

#include <QElapsedTimer>
#include <QQmlIncubationController>

namespace sonvel {
namespace {

class PanelInputTest : public PanelTest {
 protected:
  ~PanelInputTest() override {
    QGuiApplication::setFont(font_);
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
  }

  QString focused() const {
    const auto* seen = accessible(view_->activeFocusItem());
    return seen != nullptr ? seen->text(QAccessible::Name) : QString();
  }

  /// Checks while scrolling from top to bottom that nothing leaves the panel and no two items overlap.
  void expectTidy() {
    auto* area = child("scrollArea");
    const double lowest = area->property("contentHeight").toDouble() - area->height();
    for (double y = 0; y <= lowest; y = y < lowest ? std::min(lowest, y + 250) : y + 1) {
      area->setProperty("contentY", y);
      std::vector<std::pair<QRectF, std::string>> marks;
      for (const auto* item : items()) {
        QRectF where = place(item);
        for (const auto* above = item->parentItem(); above != nullptr; above = above->parentItem())
          if (above->clip()) where &= place(above);
        const bool isMark = item->inherits("QQuickText") || item->inherits("QQuickImage") ||
                            item->inherits("QQuickSlider") || item->objectName() == "meter";
        if (!isMark || where.isEmpty()) continue;
        const auto text = item->property("text").toString().left(40).toStdString();
        EXPECT_TRUE(where.left() >= 10 && where.right() <= 350) << text;
        EXPECT_LE(item->property("contentWidth").toDouble(), item->width() + 1) << text;
        for (const auto& [otherPlace, otherText] : marks) {
          const QRectF common = where & otherPlace;
          EXPECT_FALSE(common.width() > 1 && common.height() > 1) << text << " and " << otherText;
        }
        marks.emplace_back(where, text);
      }
      EXPECT_GT(marks.size(), 10U);
    }
  }

 private:
  const QFont font_ = QGuiApplication::font();
};

TEST_F(PanelInputTest, KeysReachEveryControlAndMoveASlider) {
  updates_.available = true;
  makeModelAnew();
  openWith({"Alpha"});
  QStringList order;
  for (press(Qt::Key_Tab); !order.contains(focused()); press(Qt::Key_Tab)) {
    EXPECT_TRUE(view_->activeFocusItem()->property("visualFocus").toBool()) << focused().toStdString();
    order.append(focused());
  }
  EXPECT_EQ(order, QStringList({"System Output", "Remove Alpha from the mixer", "Mute Alpha", "Alpha volume",
                                "Output for Alpha", "Reset all", "Everything → Speakers", "Check for Updates",
                                "Quit"}));
  click(volume("Alpha"));
  EXPECT_FALSE(volume("Alpha")->property("visualFocus").toBool()) << "the pointer needs no ring";
  for (const auto& [key, gain] : {std::pair{Qt::Key_Right, 101},
                                  {Qt::Key_Down, 100},
                                  {Qt::Key_PageUp, 120},
                                  {Qt::Key_Home, 0},
                                  {Qt::Key_End, 200}}) {
    press(key);
    EXPECT_EQ(row("org.Alpha")->gainPercent(), gain) << key;
  }
  click(button("Check for Updates"));
  EXPECT_EQ(updates_.checks, 1);
  for (const bool isSeen : {false, true}) {
    root()->setProperty("isSeen", isSeen);
    EXPECT_EQ(MixerInspector::isPanelOpen(*model_), isSeen);
  }
  view_.reset();
  EXPECT_FALSE(MixerInspector::isPanelOpen(*model_));
}

TEST_F(PanelInputTest, KeysWorkTheFocusedRow) {
  openWith({"Alpha", "Beta", "Gamma"});
  ASSERT_TRUE(tabTo(volume("Beta")));
  press(Qt::Key_M);
  press(Qt::Key_M, Qt::ControlModifier);
  EXPECT_TRUE(row("org.Beta")->muted());
  EXPECT_FALSE(row("org.Alpha")->muted());
  press(Qt::Key_Space);
  press(Qt::Key_Down);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(row("org.Beta")->outputUID(), "speakers");
  EXPECT_EQ(view_->activeFocusItem(), volume("Beta")) << "the menu did not give the focus back";
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
  ASSERT_TRUE(settle());
}

TEST_F(PanelInputTest, RowsThatAreSeenOrReachedExistInOrder) {
  QStringList wanted;
  std::vector<std::string> applications;
  for (int i = 100; i < 140; ++i) {
    applications.push_back(std::to_string(i));
    wanted += QString("%1 volume").arg(i);
  }
  openWith(applications);
  auto* const area = child("scrollArea");
  const auto rowsInFrame = [&] {
    return std::ranges::count_if(itemsOfFrame(), [&](QQuickItem* item) {
      const auto* seen = accessible(item);
      return seen != nullptr && seen->role() == QAccessible::ListItem && place(item).intersects(place(area));
    });
  };
  EXPECT_LT(names(QAccessible::ListItem).size(), 10);
  const auto count = rowsInFrame();
  EXPECT_GT(count, 3);
  model_->dismissChannel(row("org.100"));
  EXPECT_EQ(rowsInFrame(), count - 1) << "a change of the list held up a frame";
  QCoreApplication::processEvents(); // begins with the missing row
  for (int i = 101; i < 140; ++i)
    model_->dismissChannel(row("org." + std::to_string(i)));
  EXPECT_TRUE(names(QAccessible::ListItem).isEmpty());
  passReconciliation(); // all still play
  arrange();
  EXPECT_EQ(rowsInFrame(), count);
  area->setProperty("contentY", 1500);
  EXPECT_GE(rowsInFrame(), count) << "what the user scrolls to is missing";
  EXPECT_LT(names(QAccessible::ListItem).size(), 18);
  for (const auto& [key, direction] : {std::pair(Qt::Key_Backtab, -1), {Qt::Key_Tab, 1}}) {
    (direction > 0 ? master() : button("Reset all"))->forceActiveFocus(Qt::TabFocusReason);
    std::ranges::reverse(wanted);
    QStringList reached;
    while (reached.size() < wanted.size()) {
      press(key);
      if (focused().endsWith(" volume")) reached += focused();
      ASSERT_NE(focused(), "Quit") << reached.join(' ').toStdString();
    }
    EXPECT_EQ(reached, wanted);
  }
  play("1205", "org.1205");
  passReconciliation();
  EXPECT_EQ(names(QAccessible::ListItem).size(), 40) << "the new row is not in view";
  area->setProperty("contentY", 1700);
  const auto order = names(QAccessible::ListItem);
  EXPECT_EQ(order.size(), 41);
  EXPECT_TRUE(std::ranges::is_sorted(order)) << order.join(' ').toStdString();
  open();
  QQmlIncubationController idle; // creates nothing
  engine_.setIncubationController(&idle);
  model_->dismissChannel(row("org.100"));
  (void)itemsOfFrame();
  EXPECT_TRUE(pumpUntil([&] { return idle.incubatingObjectCount() == 1; }));
  view_.reset(); // while a row is created
  ASSERT_TRUE(settle());
}

TEST_F(PanelInputTest, WhatIsHeldStaysInTheHandWhileTheListChanges) {
  openWith({"Beta", "Middle"});
  auto* held = volume("Middle");
  auto* channel = row("org.Middle");
  ASSERT_TRUE(tabTo(held));
  QTest::mousePress(window(), Qt::LeftButton, {}, handlePlace(held, 150));
  QTest::mouseMove(window(), handlePlace(held, 160));
  EXPECT_NEAR(channel->gainPercent(), 160, 1);
  play("Aardvark", "org.Aardvark");
  play("Aaa", "org.Aaa");
  model_->dismissChannel(row("org.Beta"));
  passReconciliation();
  ASSERT_EQ(rowNames(), std::vector<std::string>({"Aaa", "Aardvark", "Beta", "Middle"}));
  EXPECT_EQ(volume("Middle"), held);
  EXPECT_EQ(view_->activeFocusItem(), held);
  channel->setGainPercent(20);
  EXPECT_NEAR(held->property("value").toDouble(), 160, 1) << "the model moved it";
  child("scrollArea")->setProperty("contentY", 900); // scrolled out of view
  QTest::mouseMove(window(), handlePlace(held, 60));
  QTest::mouseRelease(window(), Qt::LeftButton, {}, handlePlace(held, 60));
  EXPECT_NEAR(channel->gainPercent(), 60, 1);
  channel->setGainPercent(120);
  EXPECT_EQ(held->property("value"), 120);

  ASSERT_TRUE(tabTo(button("Output for Middle")));
  press(Qt::Key_Space);
  auto* headset = item(QAccessible::MenuItem, "Headset");
  play("Abc", "org.Abc");
  passReconciliation();
  ASSERT_EQ(item(QAccessible::MenuItem, "Headset"), headset);
  click(headset);
  EXPECT_EQ(channel->outputUID(), "headset");
}

TEST_F(PanelInputTest, LongTextsAndListsKeepToTheirPlace) {
  const std::string longName = "An application with " + std::string(200, 'W') + " in its name";
  for (int i = 10; i < 40; ++i) {
    audio_.addDevice({.uid = "device" + std::to_string(i), .name = std::string(150, 'D')});
    play(std::to_string(i) + longName, "org." + std::to_string(i));
  }
  const auto paused = play("0" + longName, "org.paused");
  open();
  stopPlaying(paused);
  row("org.12")->setLastError(
      CallFailure{QString("The device is out of order. ").repeated(14).toStdString()});
  model_->setOutput(std::optional<std::string>("device10"), row("org.20"));
  root()->setProperty("serverNotice", QString("A long text about sound. ").repeated(16));
  ASSERT_TRUE(settle());
  for (const int points : {10, 15}) {
    QGuiApplication::setFont(QFont("DejaVu Sans", points));
    QCoreApplication::processEvents();
    expectTidy();
  }
  EXPECT_LT(root()->implicitHeight(), 900);
  consent_.setPreflight(1);
  for (const char* language : {"de", "es", "ar"}) { // Arabic is from right to left
    const Translations words{QLocale(language)};
    open();
    root()->setProperty("isWithoutIcon", true);
    expectTidy(); // with the cards
    root()->setProperty("isClosingExplained", true);
    expectTidy(); // and the button that opens the closing card again
  }
  consent_.setPreflight(0);
  pass(kMonitorInterval);
  ASSERT_TRUE(tabTo(master()));
  const double before = model_->masterVolume();
  press(Qt::Key_Left);
  EXPECT_GT(model_->masterVolume(), before) << "the slider did not grow to the left";

  resize(300);
  EXPECT_TRUE(place(root()).contains(place(button("Quit"))));
  const QString last = "Output for 39" + QString::fromStdString(longName);
  ASSERT_TRUE(tabTo(button(last)));
  EXPECT_TRUE(place(child("scrollArea")).contains(place(button(last)))) << "it scrolls to the focus";
  press(Qt::Key_Space);
  const auto* const list = item(QAccessible::MenuItem, "Follow System Output")->parentItem()->parentItem();
  EXPECT_TRUE(place(root()).contains(place(list)));
  for (int i = 0; i < 40; ++i)
    press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(row("org.39")->outputUID(), "device39") << "the last item was not reached";
}

TEST_F(PanelInputTest, FollowsTheDesktopsColoursAndMovesOnlyWhereItMay) {
  openWith({"Alpha"});
  const auto lightness = [this] { return root()->property("color").value<QColor>().lightness(); };
  const auto level = [this] { return child("fill")->property("shown").toDouble(); };
  EXPECT_GT(lightness(), 200);
  row("org.Alpha")->setLevel(1.7F);
  EXPECT_EQ(level(), 1.0);

  appearance_.set({.colorScheme = Appearance::ColorScheme::dark});
  EXPECT_LT(lightness(), 80);
  const auto secondsToBe = [&](float wanted) {
    QElapsedTimer clock;
    clock.start();
    row("org.Alpha")->setLevel(wanted);
    EXPECT_NE(level(), wanted) << "a jump";
    EXPECT_TRUE(pumpUntil([&] { return level() == wanted; }));
    return 0.001 * static_cast<double>(clock.elapsed());
  };
  const double fall = secondsToBe(0);
  EXPECT_GT(fall, 0.25);
  EXPECT_LT(secondsToBe(1), fall);
}

} // namespace
} // namespace sonvel
