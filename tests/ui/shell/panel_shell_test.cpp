// The panel's window, and when it is shown.

#include "simulated/manual_clock.h"
#include "ui/shell/journal.h"
#include "ui/shell/panel_presence.h"
#include "ui/shell/panel_window.h"

#include <gmock/gmock.h>

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>
#include <QTest>

namespace sonvel::ui {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::Optional;
using Style = PanelWindow::Style;

class PanelShellTest : public ::testing::Test {
 protected:
  PanelShellTest() {
    QObject::connect(&panel_, &PanelWindow::plainWindowClosedByUser, [this] { ++closedByUser_; });
  }

  /// Until what was closed is destroyed, and the window system has done what was asked.
  static void settle() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  void open(Style style) {
    ASSERT_TRUE(panel_.open(style));
    ASSERT_TRUE(QTest::qWaitForWindowActive(panel_.window()));
    settle();
  }

  void press(Qt::Key key) {
    QTest::keyClick(panel_.window(), key);
    settle();
  }

  static void focus(QWindow& window) {
    window.show();
    window.requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    settle();
  }

  PanelPresence presence(milliseconds trayPatience) {
    return {panel_, [] { return QRect(100, 0, 20, 20); }, [this] { ++quits_; }, trayPatience};
  }

  static constexpr milliseconds kNone{0};

  int argc_ = 0;
  QGuiApplication application_{argc_, nullptr};
  simulated::ManualClock clock_;
  testing::Journal journal_;
  QQuickItem* content_ = nullptr;
  PanelWindow panel_{{.source = QUrl::fromLocalFile(SONVEL_PANEL_CONTENT),
                      .properties = {{"journal", QVariant::fromValue<QObject*>(&journal_)}},
                      .ready = [this](QQuickItem& root) { content_ = &root; }},
                     clock_};
  int closedByUser_ = 0;
  int quits_ = 0;
};

TEST_F(PanelShellTest, ContentGoesBeforeTheNextComesAndIsMadeOnce) {
  open(Style::panel);
  const QPointer<QObject> engine = qmlEngine(content_);
  panel_.close();
  settle();
  EXPECT_TRUE(engine.isNull()) << "a closed panel is still in memory";
  open(Style::plainWindow);
  open(Style::panel);
  const QPointer<QQuickWindow> window = panel_.window();
  open(Style::panel);
  EXPECT_EQ(panel_.window(), window);
  EXPECT_THAT(journal_.take(), ElementsAre("appeared", "disappeared", "appeared", "disappeared", "appeared"));
  PanelWindow empty({.source = QUrl("file:///nonexistent.qml")}, clock_);
  EXPECT_FALSE(empty.open(Style::panel));
  EXPECT_FALSE(empty.isOpen());
}

TEST_F(PanelShellTest, APanelClosesOnEscapeAndLossOfFocusAPlainWindowDoesNot) {
  QWindow other;
  for (const auto style : {Style::panel, Style::plainWindow}) {
    const bool isPlain = style == Style::plainWindow;
    open(style);
    EXPECT_EQ(panel_.window()->flags().testFlag(Qt::FramelessWindowHint), !isPlain);
    auto* const menu = content_->property("menu").value<QObject*>();
    QMetaObject::invokeMethod(menu, "open");
    press(Qt::Key_Escape); // the menu's
    press(Qt::Key_A);
    EXPECT_TRUE(panel_.isOpen());
    press(Qt::Key_Escape);
    EXPECT_EQ(panel_.isOpen(), isPlain);

    open(style);
    QWindow own;
    own.setTransientParent(panel_.window());
    focus(own);
    EXPECT_TRUE(panel_.isOpen());
    focus(other);
    EXPECT_EQ(panel_.isOpen(), isPlain);
  }
  EXPECT_EQ(closedByUser_, 0);
  panel_.close();
  EXPECT_EQ(closedByUser_, 0);
  open(Style::plainWindow);
  panel_.window()->close();
  EXPECT_FALSE(panel_.isOpen());
  EXPECT_EQ(closedByUser_, 1);
}

TEST_F(PanelShellTest, TheClickThatClosedItDoesNotReopenIt) {
  QWindow elsewhere;
  for (const auto& [delay, isReopened] :
       {std::pair{milliseconds(200), false}, {PanelWindow::kClickDuration + milliseconds(1), true}}) {
    open(Style::panel);
    focus(elsewhere);
    ASSERT_FALSE(panel_.isOpen());
    clock_.advance(delay);
    panel_.toggle(); // the same click, as the icon reports it
    EXPECT_EQ(panel_.isOpen(), isReopened);
    panel_.toggle();
    EXPECT_EQ(panel_.isOpen(), !isReopened);
    panel_.close();
  }
}

TEST_F(PanelShellTest, IsAsHighAsItsContentAndNoHigherThanTheScreen) {
  const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
  for (const auto style : {Style::panel, Style::plainWindow}) {
    open(style);
    for (const int height : {420, 200, available.height() + 100}) {
      content_->setProperty("wantedHeight", height);
      settle();
      EXPECT_EQ(panel_.window()->size(), QSize(360, std::min(height, available.height())));
      EXPECT_EQ(content_->size(), QSizeF(panel_.window()->size()));
      EXPECT_TRUE(style == Style::plainWindow || available.contains(panel_.window()->geometry()));
    }
  }
}

TEST_F(PanelShellTest, PresenceIsAtTheIconWhileThereIsATray) {
  PanelPresence presence = this->presence(kNone);
  presence.setTrayShown(true);
  presence.setTrayShown(false); // the tray restarts
  presence.setTrayShown(true);
  settle();
  EXPECT_FALSE(panel_.isOpen());
  presence.clickIcon();
  EXPECT_THAT(panel_.style(), Optional(Style::panel));
  EXPECT_EQ(panel_.window()->y(), 20);
  presence.clickIcon();
  EXPECT_FALSE(panel_.isOpen());
  presence.show();
  EXPECT_THAT(panel_.style(), Optional(Style::panel));
  presence.setTrayShown(false);
  EXPECT_TRUE(QTest::qWaitFor([&] { return panel_.style() == Style::plainWindow; }));
  presence.setTrayShown(true);
  presence.show();
  EXPECT_THAT(panel_.style(), Optional(Style::plainWindow)) << "the user saw it change";
  panel_.window()->close();
  EXPECT_EQ(quits_, 0) << "the icon is there";
}

TEST_F(PanelShellTest, PresenceIsAWindowWithoutATrayWhoseClosingQuits) {
  {
    PanelPresence presence = this->presence(kNone);
    presence.setTrayShown(false);
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel_.style() == Style::plainWindow; }));
    panel_.window()->close();
    EXPECT_EQ(quits_, 1);
  }
  PanelPresence patient = presence(std::chrono::hours(1));
  patient.setTrayShown(false);
  settle();
  EXPECT_FALSE(panel_.isOpen()) << "a tray may come yet";
  patient.show();
  EXPECT_THAT(panel_.style(), Optional(Style::plainWindow));
  patient.end();
  patient.clickIcon();
  patient.show();
  EXPECT_FALSE(panel_.isOpen()) << "the program has ended";
}

} // namespace
} // namespace sonvel::ui
