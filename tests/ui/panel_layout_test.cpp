// Nothing overlaps and nothing leaves the panel, however long it is; what moves comes to rest.

#include "ui/panel_test.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>
#include <QQuickPaintedItem>

namespace sonvel {
namespace {

class LayoutTest : public PanelTest {
 protected:
  LayoutTest() { audio_.addDevice({.uid = "long", .name = "A device " + std::string(150, 'M')}); }

  ~LayoutTest() override {
    QGuiApplication::setFont(font_);
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
  }

  /// Where the item can be seen.
  static QRectF visiblePlace(const QQuickItem* item) {
    QRectF visible = place(item);
    for (const auto* ancestor = item->parentItem(); ancestor != nullptr; ancestor = ancestor->parentItem())
      if (ancestor->clip()) visible &= place(ancestor);
    return visible;
  }

  void expectTidy() const {
    std::vector<std::pair<QRectF, std::string>> marks;
    for (const auto* item : items()) {
      const bool isMark = item->inherits("QQuickText") || item->inherits("QQuickImage") ||
                          item->inherits("QQuickSlider") || item->objectName() == "meter";
      const auto where = visiblePlace(item);
      if (!isMark || where.isEmpty()) continue;
      const auto text = item->property("text").toString().left(40).toStdString();
      EXPECT_GE(where.left(), 10) << text;
      EXPECT_LE(where.right(), 350) << text;
      EXPECT_LE(item->property("contentWidth").toDouble(), item->width() + 1) << text;
      for (const auto& [otherPlace, otherText] : marks) {
        const QRectF common = where & otherPlace;
        EXPECT_FALSE(common.width() > 1 && common.height() > 1) << text << " and " << otherText;
      }
      marks.emplace_back(where, text);
    }
    EXPECT_GT(marks.size(), 10U);
  }

  /// From the top to the bottom of the list.
  void expectTidyThroughout() {
    auto* area = itemNamed("scrollArea");
    const double lowest = area->property("contentHeight").toDouble() - area->height();
    for (double y = 0;; y = std::min(lowest, y + 250)) {
      area->setProperty("contentY", y);
      expectTidy();
      if (y >= lowest) break;
    }
  }

  /// Names, devices and errors that are far too long, in every state of a row.
  void openWithLongTexts() {
    const std::string longName = "An application with " + std::string(200, 'W') + " in its name";
    const auto paused = play(longName, "org.paused");
    play("B" + longName, "org.error");
    play("C" + longName, "org.routed");
    open();
    stopPlaying(paused);
    row("org.paused")->setLastError(CallFailure{std::string(400, 'x')});
    row("org.error")
        ->setLastError(CallFailure{QString("The device refuses to play. ").repeated(14).toStdString()});
    for (const char* key : {"org.error", "org.routed"})
      model_->setOutput(std::optional<std::string>("long"), row(key));
    model_->setGain(200, row("org.routed"));
    root()->setProperty("serverNotice", QString("A long tale about sound. ").repeated(16));
    ASSERT_TRUE(settle());
  }

 private:
  const QFont font_ = QGuiApplication::font();
};

TEST_F(LayoutTest, LongTextsKeepToTheirPlaceAtEveryFontSizeAndDirection) {
  openWithLongTexts();
  for (const int points : {10, 15}) {
    SCOPED_TRACE(points);
    QGuiApplication::setFont(QFont("DejaVu Sans", points));
    QCoreApplication::processEvents();
    expectTidyThroughout();
  }
  close();
  QGuiApplication::setLayoutDirection(Qt::RightToLeft);
  consent_.setPreflight(1);
  open();
  expectTidyThroughout(); // with the permission card
  consent_.setPreflight(0);
  pass(kMonitorInterval);
  auto* const master = item(QAccessible::Slider, "System Output");
  EXPECT_LT(place(master).right(), place(item(QAccessible::StaticText, "System Output")).right());
  ASSERT_TRUE(tabTo(master));
  const double before = model_->masterVolume();
  press(Qt::Key_Left);
  EXPECT_GT(model_->masterVolume(), before) << "the slider did not grow to the left";
}

TEST_F(LayoutTest, FollowsTheContentsHeightAndScrollsBeyond) {
  std::vector<std::string> names;
  for (int i = 10; i < 40; ++i)
    names.push_back("App " + std::to_string(i));
  openWith({});
  root()->setProperty("serverNotice", "a line in each case");
  (void)items();
  const double least = root()->implicitHeight();
  EXPECT_EQ(root()->implicitWidth(), 360);
  close();
  openWith(names);
  root()->setProperty("serverNotice", "a line in each case");
  (void)items();
  EXPECT_EQ(root()->implicitHeight() - least, 460 - 320) << "the heights of the scroll area";
  view_->resize(360, 300);
  ASSERT_TRUE(pumpUntil([this] { return root()->height() == 300; }));
  expectTidyThroughout();
  EXPECT_EQ(place(button("Quit")).bottom(), 288);

  for (int i = 0; i < 30; ++i)
    audio_.addDevice({.uid = "device" + std::to_string(i), .name = std::string(90, 'D')});
  close();
  open();
  view_->resize(360, 300);
  click(button("Output for App 10"));
  const auto* const list = item(QAccessible::MenuItem, "Follow System Output")->parentItem()->parentItem();
  EXPECT_TRUE(QRectF(0, 0, 360, 300).contains(place(list)));
  for (int i = 0; i < 40; ++i)
    press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(row("org.App 10")->outputUID(), "device29") << "the last item was not reached";
}

TEST_F(LayoutTest, ThemeFollowsTheDesktop) {
  open();
  const auto window = [this] { return root()->property("color").value<QColor>().lightness(); };
  EXPECT_GT(window(), 200);
  EXPECT_FALSE(theme_->animates());
  appearance_.set({.colorScheme = Appearance::ColorScheme::dark});
  EXPECT_LT(window(), 80);
  EXPECT_TRUE(theme_->animates());

  for (const auto& [points, body, badge] : {std::tuple{10, 13, 9}, {12, 16, 11}, {4, 11, 8}, {40, 20, 14}}) {
    QGuiApplication::setFont(QFont("DejaVu Sans", points));
    EXPECT_TRUE(pumpUntil([&] { return theme_->body().pixelSize() == body; })) << points;
    EXPECT_EQ(theme_->badge().pixelSize(), badge) << points;
  }
  const QFontMetricsF digits(theme_->digits());
  EXPECT_EQ(digits.horizontalAdvance("111"), digits.horizontalAdvance("208"));
}

TEST_F(LayoutTest, MovesInStepsOnlyWhereTheDesktopWantsIt) {
  openWith({"Alpha"});
  auto* const fill = qobject_cast<QQuickPaintedItem*>(itemNamed("fill"));
  const auto shownLevel = [&] { return fill->property("shown").toDouble(); };
  const auto shownPosition = [this] { return slider("Alpha")->property("shownPosition").toDouble(); };
  for (const auto& [level, width] : {std::pair{0.25F, 0.25}, {-0.2F, 0.0}, {1.7F, 1.0}}) {
    row("org.Alpha")->setLevel(level);
    QImage image(fill->size().toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    fill->paint(&painter);
    int filled = 0;
    for (int x = 0; x < image.width(); ++x)
      filled += qAlpha(image.pixel(x, image.height() / 2)) > 0 ? 1 : 0;
    EXPECT_NEAR(filled, width * fill->width(), 1) << level;
  }
  model_->setGain(200, row("org.Alpha"));
  EXPECT_EQ(shownPosition(), 1.0);

  appearance_.set({.colorScheme = Appearance::ColorScheme::light});
  row("org.Alpha")->setLevel(0.0F);
  model_->resetAllVolumes();
  EXPECT_EQ(shownLevel(), 1.0);
  EXPECT_GT(shownPosition(), 0.5);
  EXPECT_TRUE(pumpUntil([&] { return shownLevel() < 1.0; }));
  EXPECT_GT(shownLevel(), 0.0) << "a jump";
  EXPECT_TRUE(pumpUntil([&] { return shownLevel() == 0.0 && shownPosition() == 0.5; }));
  clickAt(slider("Alpha"), 200);
  EXPECT_EQ(shownPosition(), 1.0) << "the handle does not follow the hand at once";
}

} // namespace
} // namespace sonvel
