// Nothing overlaps and nothing leaves the panel, however long it is.

#include "ui/panel_test.h"

#include <QGuiApplication>

namespace sonvel {
namespace {

/// Part of an item that can be seen: where it is, less what its ancestors clip.
struct Mark {
  const QQuickItem* item;
  QRectF place;
};

QRectF visiblePlace(const QQuickItem* item, QRectF place) {
  for (const auto* ancestor = item->parentItem(); ancestor != nullptr; ancestor = ancestor->parentItem())
    if (ancestor->clip())
      place &= ancestor->mapRectToScene(QRectF(0, 0, ancestor->width(), ancestor->height()));
  return place;
}

class LayoutTest : public PanelTest {
 protected:
  LayoutTest() { audio_.addDevice({.uid = "long", .name = "A device " + std::string(150, 'M')}); }

  ~LayoutTest() override {
    QGuiApplication::setFont(font_);
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
  }

  /// Texts, pictures, sliders and meters, without what is scrolled away.
  std::vector<Mark> marks() const {
    std::vector<Mark> marks;
    for (const auto* item : items()) {
      const bool isMark = item->inherits("QQuickText") || item->inherits("QQuickImage") ||
                          item->inherits("QQuickSlider") || item->objectName() == "meter";
      if (!isMark) continue;
      const QRectF place =
          visiblePlace(item, item->mapRectToScene(QRectF(0, 0, item->width(), item->height())));
      if (!place.isEmpty()) marks.push_back({item, place});
    }
    return marks;
  }

  static std::string describe(const Mark& mark) {
    QString text;
    QDebug(&text) << mark.item->metaObject()->className() << mark.item->property("text").toString().left(40)
                  << mark.place;
    return text.toStdString();
  }

  void expectTidy() const {
    const auto all = marks();
    ASSERT_GT(all.size(), 10U);
    for (std::size_t i = 0; i < all.size(); ++i) {
      EXPECT_GE(all[i].place.left(), 10) << describe(all[i]);
      EXPECT_LE(all[i].place.right(), 350) << describe(all[i]);
      if (all[i].item->inherits("QQuickText")) {
        EXPECT_LE(all[i].item->property("contentWidth").toDouble(), all[i].item->width() + 1)
            << describe(all[i]);
      }
      for (std::size_t j = 0; j < i; ++j) {
        const QRectF common = all[i].place & all[j].place;
        EXPECT_FALSE(common.width() > 1 && common.height() > 1) << describe(all[i]) << "\n"
                                                                << describe(all[j]);
      }
    }
  }

  /// Names, devices and errors that are far too long, in every state of a row.
  void playLongNames() {
    const std::string longName = "An application with " + std::string(200, 'W') + " in its name";
    const auto paused = play(longName, "org.paused");
    play("B" + longName, "org.error");
    play("C" + longName, "org.routed");
    open();
    audio_.removeProcess(paused);
    passReconciliation();
    passReconciliation();
    row("org.paused")->setLastError(std::string(400, 'x'));
    std::string words = "The device refuses to play and says why at length. ";
    while (words.size() < 400)
      words += words;
    row("org.error")->setLastError(words.substr(0, 400));
    for (const char* key : {"org.error", "org.routed"})
      model_->setOutput(std::optional<std::string>("long"), row(key));
    model_->setGain(200, row("org.routed"));
    model_->setGain(200, row("org.paused"));
    root()->setProperty("serverNotice",
                        QString("Sound is away and this is a long tale about it. ").repeated(8));
    ASSERT_TRUE(settle());
    QCoreApplication::processEvents();
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

 private:
  QFont font_ = QGuiApplication::font();
};

TEST_F(LayoutTest, LongTextsKeepToTheirPlace) {
  for (const double points : {10.0, 15.0}) {
    SCOPED_TRACE(points);
    QGuiApplication::setFont(QFont("DejaVu Sans", static_cast<int>(points)));
    QCoreApplication::processEvents();
    playLongNames();
    expectTidyThroughout();
    close();
    for (const char* key : {"org.paused", "org.error", "org.routed"})
      model_->dismissChannel(row(key));
    ASSERT_TRUE(settle());
  }
}

TEST_F(LayoutTest, TheCardKeepsToItsPlace) {
  consent_.setPreflight(1);
  for (const int points : {10, 15}) {
    SCOPED_TRACE(points);
    QGuiApplication::setFont(QFont("DejaVu Sans", points));
    QCoreApplication::processEvents();
    open();
    expectTidyThroughout();
    close();
  }
}

TEST_F(LayoutTest, ReadsFromRightToLeft) {
  QGuiApplication::setLayoutDirection(Qt::RightToLeft);
  playLongNames();
  expectTidyThroughout();
  itemNamed("scrollArea")->setProperty("contentY", 0);
  const auto right = [this](QAccessible::Role role, const QString& name) {
    return place(item(role, name)).right();
  };
  EXPECT_EQ(right(QAccessible::StaticText, "OUTPUT"), 348);
  EXPECT_LT(right(QAccessible::Slider, "System Output"), right(QAccessible::StaticText, "System Output"));

  auto* master = item(QAccessible::Slider, "System Output");
  ASSERT_TRUE(tabTo(master));
  const double before = model_->masterVolume();
  press(Qt::Key_Left);
  EXPECT_GT(model_->masterVolume(), before) << "the slider grows to the left";
}

TEST_F(LayoutTest, FortyRowsFit) {
  std::vector<std::string> names;
  for (int i = 10; i < 50; ++i)
    names.push_back("App " + std::to_string(i));
  openWith(names);
  expectTidyThroughout();
}

TEST_F(LayoutTest, ASmallWindowScrolls) {
  openWith({"Alpha", "Beta", "Gamma"});
  view_->resize(360, 300);
  ASSERT_TRUE(pumpUntil([this] { return root()->height() == 300; }));
  expectTidyThroughout();
  EXPECT_EQ(place(item(QAccessible::Button, "Quit")).bottom(), 288);
}

} // namespace
} // namespace sonvel
