#include "session/eventually.h"
#include "simulated/manual_clock.h"
#include "ui/shell/journal.h"
#include "ui/shell/panel_window.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace sonvel::ui {

namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using testing::Journal;
using Style = PanelWindow::Style;

class PanelWindowTest : public ::testing::Test {
 protected:
  PanelWindowTest() {
    QObject::connect(&panel_, &PanelWindow::plainWindowClosedByUser, [this] { ++closedByUser_; });
  }

  // Until what was closed is destroyed, and what was asked of the window system has happened.
  static void settle() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  void open(Style style = Style::panel) {
    ASSERT_TRUE(panel_.open(style));
    ASSERT_TRUE(session::eventually([this] {
      settle();
      return panel_.window()->isActive();
    }));
  }

  void press(Qt::Key key) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(panel_.window(), &event);
    settle();
  }

  void focus(QWindow& window) {
    window.show();
    window.requestActivate();
    ASSERT_TRUE(session::eventually([&] {
      settle();
      return window.isActive();
    }));
  }

  int argc_ = 0;
  QGuiApplication application_{argc_, nullptr};
  simulated::ManualClock clock_;
  Journal journal_;
  QQuickItem* content_ = nullptr;
  PanelWindow panel_{{.source = QUrl::fromLocalFile(SONVEL_PANEL_CONTENT),
                      .properties = {{"journal", QVariant::fromValue<QObject*>(&journal_)}},
                      .ready = [this](QQuickItem& root) { content_ = &root; }},
                     clock_};
  int closedByUser_ = 0;
};

TEST_F(PanelWindowTest, isDestroyedWhenClosed) {
  open();
  const QPointer<QQuickWindow> window = panel_.window();
  const QPointer<QObject> engine = qmlEngine(content_);
  panel_.close();
  settle();
  EXPECT_TRUE(window.isNull());
  EXPECT_TRUE(engine.isNull());
  EXPECT_THAT(journal_.take(), ElementsAre("appeared", "disappeared"));
}

TEST_F(PanelWindowTest, leavesNoDescriptorsAndThreads) {
  const auto count = [](const char* kind) {
    return QDir(QString("/proc/self/") + kind)
        .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System);
  };
  const auto openAndClose = [this] {
    open();
    ASSERT_TRUE(session::eventually([this] {
      settle();
      return panel_.window()->isExposed();
    }));
    panel_.window()->grabWindow(); // draws
    panel_.close();
    settle();
  };
  openAndClose();
  const auto descriptors = count("fd").size();
  const auto threads = count("task").size();
  for (int i = 0; i < 5; ++i)
    openAndClose();
  EXPECT_EQ(count("fd").size(), descriptors);
  // A thread is still listed for a moment after it was joined.
  EXPECT_TRUE(session::eventually([&] { return count("task").size() <= threads; }));
}

TEST_F(PanelWindowTest, tellsTheModelThatOneWentBeforeTheNextCame) {
  open();
  panel_.close();
  ASSERT_TRUE(panel_.open(Style::plainWindow));
  ASSERT_TRUE(panel_.open(Style::panel));
  EXPECT_THAT(journal_.take(), ElementsAre("appeared", "disappeared", "appeared", "disappeared", "appeared"));
}

TEST_F(PanelWindowTest, hasAFrameAsAPlainWindowOnly) {
  open();
  EXPECT_TRUE(panel_.window()->flags().testFlag(Qt::FramelessWindowHint));
  EXPECT_EQ(panel_.window()->type(), Qt::Tool);
  open(Style::plainWindow);
  EXPECT_FALSE(panel_.window()->flags().testFlag(Qt::FramelessWindowHint));
  EXPECT_EQ(panel_.window()->type(), Qt::Window);
  EXPECT_EQ(panel_.window()->title(), "Sonvel");
}

TEST_F(PanelWindowTest, closesOnEscapeUnlessTheContentTakesIt) {
  open();
  auto* const menu = content_->property("menu").value<QObject*>();
  QMetaObject::invokeMethod(menu, "open");
  settle();
  press(Qt::Key_Escape);
  EXPECT_TRUE(panel_.isOpen());
  QMetaObject::invokeMethod(menu, "close");
  settle();
  press(Qt::Key_A);
  EXPECT_TRUE(panel_.isOpen());
  press(Qt::Key_Escape);
  EXPECT_FALSE(panel_.isOpen());

  open(Style::plainWindow);
  press(Qt::Key_Escape);
  EXPECT_TRUE(panel_.isOpen());
}

TEST_F(PanelWindowTest, closesWhenTheFocusGoesElsewhereButNotToItsOwn) {
  open();
  QWindow own;
  own.setTransientParent(panel_.window());
  focus(own);
  EXPECT_TRUE(panel_.isOpen());
  QWindow other;
  focus(other);
  EXPECT_FALSE(panel_.isOpen());

  open(Style::plainWindow);
  focus(other);
  EXPECT_TRUE(panel_.isOpen());
  EXPECT_EQ(closedByUser_, 0);
}

TEST_F(PanelWindowTest, isNotReopenedByTheClickThatClosedIt) {
  panel_.toggle();
  open();
  QWindow elsewhere;
  focus(elsewhere);
  ASSERT_FALSE(panel_.isOpen());
  clock_.advance(milliseconds(200));
  panel_.toggle(); // the same click, as the icon tells it
  EXPECT_FALSE(panel_.isOpen());
  panel_.toggle(); // the next one
  EXPECT_TRUE(panel_.isOpen());
  panel_.toggle();
  EXPECT_FALSE(panel_.isOpen());

  open();
  focus(elsewhere);
  clock_.advance(PanelWindow::kClickDuration + milliseconds(1));
  panel_.toggle();
  EXPECT_TRUE(panel_.isOpen());
}

TEST_F(PanelWindowTest, tellsWhenTheUserClosesAPlainWindow) {
  open(Style::plainWindow);
  panel_.close();
  EXPECT_EQ(closedByUser_, 0);
  open(Style::plainWindow);
  panel_.window()->close();
  EXPECT_FALSE(panel_.isOpen());
  EXPECT_EQ(closedByUser_, 1);
  open();
  panel_.window()->close();
  EXPECT_FALSE(panel_.isOpen());
  EXPECT_EQ(closedByUser_, 1);
}

TEST_F(PanelWindowTest, isAsHighAsItsContentAndNoHigherThanTheScreen) {
  const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
  for (const Style style : {Style::panel, Style::plainWindow}) {
    open(style);
    EXPECT_EQ(panel_.window()->size(), QSize(360, 300));
    for (const int height : {420, 200, available.height() + 100}) {
      content_->setProperty("wantedHeight", height);
      settle();
      EXPECT_EQ(panel_.window()->size(), QSize(360, std::min(height, available.height())));
      EXPECT_EQ(content_->size(), QSizeF(panel_.window()->size()));
      EXPECT_TRUE(style == Style::plainWindow || available.contains(panel_.window()->geometry()));
    }
  }
}

TEST_F(PanelWindowTest, isOneAndRaisedWhenOpenedAgain) {
  open(Style::plainWindow);
  const QPointer<QQuickWindow> window = panel_.window();
  QWindow other;
  focus(other);
  open(Style::plainWindow);
  EXPECT_EQ(panel_.window(), window);
  EXPECT_TRUE(window->isActive());
  EXPECT_THAT(journal_.take(), ElementsAre("appeared"));
}

TEST_F(PanelWindowTest, staysClosedWithoutContent) {
  PanelWindow empty({.source = QUrl("file:///nonexistent.qml")}, clock_);
  EXPECT_FALSE(empty.open(Style::panel));
  EXPECT_FALSE(empty.isOpen());
}

} // namespace

} // namespace sonvel::ui
