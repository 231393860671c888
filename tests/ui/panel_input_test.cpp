// What the user does with keys and pointer, also while the list changes, and that there is room for
// everything.

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

  /// Two rows are inserted before "Middle", and one between them is removed.
  void changeTheList() {
    play("Aardvark", "org.Aardvark");
    play("Aaa", "org.Aaa");
    model_->dismissChannel(row("org.Beta"));
    passReconciliation();
    ASSERT_EQ(rowNames(), std::vector<std::string>({"Aaa", "Aardvark", "Beta", "Middle"}));
  }
};

TEST_F(PanelInputTest, TabReachesEveryControlInReadingOrder) {
  openWith({"Alpha"});
  QStringList order;
  for (press(Qt::Key_Tab); !order.contains(focused()); press(Qt::Key_Tab)) {
    EXPECT_TRUE(view_->activeFocusItem()->property("visualFocus").toBool()) << focused().toStdString();
    order.append(focused());
  }
  EXPECT_EQ(order, QStringList({"System Output", "Remove Alpha from the mixer", "Mute Alpha", "Alpha volume",
                                "Output for Alpha", "Reset all", "Everything → Speakers", "Quit"}));
  click(volume("Alpha"));
  EXPECT_FALSE(volume("Alpha")->property("visualFocus").toBool()) << "the pointer needs no ring";
}

TEST_F(PanelInputTest, KeysMoveASlider) {
  openWith({"Alpha"});
  ASSERT_TRUE(tabTo(volume("Alpha")));
  for (const auto& [key, gain] : {std::pair{Qt::Key_Right, 101},
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
  EXPECT_TRUE(rowNames().empty());
  ASSERT_TRUE(settle());
}

TEST_F(PanelInputTest, ButtonsOfTheWholePanel) {
  updates_.available = true;
  makeModelAnew();
  openWith({"Alpha"});
  const QSignalSpy quit(root(), SIGNAL(quitRequested()));
  model_->setGain(150, row("org.Alpha"));
  model_->setOutput(std::optional<std::string>("headset"), row("org.Alpha"));
  click(button("Reset all"));
  EXPECT_EQ(row("org.Alpha")->gainPercent(), 100);
  EXPECT_EQ(row("org.Alpha")->outputUID(), "headset");
  click(button("Everything → Speakers"));
  ASSERT_TRUE(settle());
  EXPECT_EQ(row("org.Alpha")->outputUID(), std::nullopt);
  click(button("Check for Updates"));
  EXPECT_EQ(updates_.checks, 1);
  click(button("Quit"));
  EXPECT_EQ(quit.count(), 1);
  EXPECT_TRUE(MixerInspector::isPanelOpen(*model_));
  view_.reset();
  EXPECT_FALSE(MixerInspector::isPanelOpen(*model_));
}

TEST_F(PanelInputTest, AHeldSliderFollowsTheHandAndThenTheModel) {
  openWith({"Beta", "Middle"});
  auto* held = volume("Middle");
  auto* channel = row("org.Middle");
  QTest::mousePress(window(), Qt::LeftButton, {}, handlePlace(held, 150));
  QTest::mouseMove(window(), handlePlace(held, 160));
  EXPECT_NEAR(channel->gainPercent(), 160, 1);
  const double before = place(held).y();
  changeTheList();
  ASSERT_EQ(volume("Middle"), held);
  ASSERT_NE(place(held).y(), before);
  channel->setGainPercent(20);
  EXPECT_NEAR(held->property("value").toDouble(), 160, 1) << "the model moved it";
  child("scrollArea")->setProperty("contentY", 900); // out of sight
  QTest::mouseMove(window(), handlePlace(held, 60));
  QTest::mouseRelease(window(), Qt::LeftButton, {}, handlePlace(held, 60));
  EXPECT_NEAR(channel->gainPercent(), 60, 1);
  channel->setGainPercent(120);
  EXPECT_EQ(held->property("value"), 120);
}

TEST_F(PanelInputTest, FocusAndMenuStayOnTheirRow) {
  openWith({"Beta", "Middle"});
  auto* focused = volume("Middle");
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

class PanelRoomTest : public PanelTest {
 protected:
  ~PanelRoomTest() override {
    QGuiApplication::setFont(font_);
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
  }

  /// From the top to the bottom of the list, nothing leaves the panel and no two marks overlap.
  void expectTidy() {
    auto* area = child("scrollArea");
    const double lowest = area->property("contentHeight").toDouble() - area->height();
    for (double y = 0; y <= lowest; y = y < lowest ? std::min(lowest, y + 250) : y + 1) {
      area->setProperty("contentY", y);
      std::vector<std::pair<QRectF, std::string>> marks;
      for (const auto* item : items()) {
        QRectF where = place(item);
        for (const auto* ancestor = item->parentItem(); ancestor != nullptr;
             ancestor = ancestor->parentItem())
          if (ancestor->clip()) where &= place(ancestor);
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

TEST_F(PanelRoomTest, LongTextsKeepToTheirPlaceAtEveryFontSizeAndDirection) {
  audio_.addDevice({.uid = "long", .name = "A device " + std::string(150, 'M')});
  const std::string longName = "An application with " + std::string(200, 'W') + " in its name";
  const auto paused = play(longName, "org.paused");
  play("B" + longName, "org.error");
  play("C" + longName, "org.routed");
  open();
  stopPlaying(paused);
  row("org.paused")->setLastError(CallFailure{std::string(400, 'x')});
  row("org.error")
      ->setLastError(CallFailure{QString("The device is out of order. ").repeated(14).toStdString()});
  for (const char* key : {"org.error", "org.routed"})
    model_->setOutput(std::optional<std::string>("long"), row(key));
  model_->setGain(200, row("org.routed"));
  root()->setProperty("serverNotice", QString("A long text about sound. ").repeated(16));
  ASSERT_TRUE(settle());
  for (const int points : {10, 15}) {
    QGuiApplication::setFont(QFont("DejaVu Sans", points));
    QCoreApplication::processEvents();
    expectTidy();
  }
  QGuiApplication::setLayoutDirection(Qt::RightToLeft);
  consent_.setPreflight(1);
  open();
  expectTidy(); // with the permission card
  consent_.setPreflight(0);
  pass(kMonitorInterval);
  ASSERT_TRUE(tabTo(master()));
  const double before = model_->masterVolume();
  press(Qt::Key_Left);
  EXPECT_GT(model_->masterVolume(), before) << "the slider did not grow to the left";
}

TEST_F(PanelRoomTest, GrowsWithItsContentAndScrollsBeyond) {
  open();
  const double least = root()->implicitHeight();
  std::vector<std::string> names;
  for (int i = 10; i < 40; ++i) {
    names.push_back("App " + std::to_string(i));
    audio_.addDevice({.uid = "device" + std::to_string(i), .name = std::string(90, 'D')});
  }
  view_.reset();
  openWith(names);
  (void)items();
  EXPECT_GT(root()->implicitHeight(), least);
  EXPECT_LT(root()->implicitHeight(), least + 200);
  for (const char* name : {"App 39", "App 10"}) {
    ASSERT_TRUE(tabTo(volume(name)));
    EXPECT_TRUE(place(child("scrollArea")).contains(place(volume(name)))) << name;
  }
  resize(300);
  expectTidy();
  EXPECT_EQ(place(button("Quit")).bottom(), 288);
  child("scrollArea")->setProperty("contentY", 0);
  click(button("Output for App 10"));
  const auto* const list = item(QAccessible::MenuItem, "Follow System Output")->parentItem()->parentItem();
  EXPECT_TRUE(QRectF(0, 0, 360, 300).contains(place(list)));
  for (int i = 0; i < 40; ++i)
    press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(row("org.App 10")->outputUID(), "device39") << "the last item was not reached";
}

TEST_F(PanelRoomTest, FollowsTheDesktopsColoursAndMovesOnlyWhereItMay) {
  openWith({"Alpha"});
  const auto lightness = [this] { return root()->property("color").value<QColor>().lightness(); };
  const auto level = [this] { return child("fill")->property("shown").toDouble(); };
  const auto position = [this] { return volume("Alpha")->property("shownPosition").toDouble(); };
  EXPECT_GT(lightness(), 200);
  row("org.Alpha")->setLevel(1.7F);
  EXPECT_EQ(level(), 1.0);
  model_->setGain(200, row("org.Alpha"));
  EXPECT_EQ(position(), 1.0);

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
  EXPECT_GT(secondsToBe(0), 0.25);
  EXPECT_LT(secondsToBe(1), 0.25);
  model_->resetAllVolumes();
  EXPECT_GT(position(), 0.5);
  EXPECT_TRUE(pumpUntil([&] { return position() == 0.5; }));
  clickAt(volume("Alpha"), 200);
  EXPECT_EQ(position(), 1.0) << "the handle does not follow the hand at once";
}

} // namespace
} // namespace sonvel
