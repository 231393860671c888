// The panel's window, and when it opens.

#include "simulated/manual_clock.h"
#include "ui/shell/accessible_placeholders.h"
#include "ui/shell/panel_placement.h"
#include "ui/shell/panel_presence.h"
#include "ui/shell/panel_window.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>
#include <QTest>

namespace sonvel::ui {
namespace {

using std::chrono::milliseconds;
using Style = PanelWindow::Style;

class PanelShellTest : public testing::Test {
 protected:
  /// Waits until closed windows are destroyed and the window system has answered.
  static void settle() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  static void focus(QWindow& window) {
    window.show();
    window.requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    settle();
  }

  void open(Style style) {
    ASSERT_TRUE(panel_.open(style));
    focus(*panel_.window());
  }

  simulated::ManualClock clock_;
  int height_ = 300;
  QPointer<QQuickItem> content_;
  PanelWindow panel_{{.source = QUrl::fromLocalFile(SONVEL_PANEL_CONTENT),
                      .ready =
                          [this](QQuickItem& root) {
                            EXPECT_TRUE(content_.isNull()) << "the model hears the old go after the new came";
                            content_ = &root;
                            root.setImplicitHeight(height_);
                          }},
                     clock_};
  int quits_ = 0;
};

TEST_F(PanelShellTest, APanelClosesOnEscapeAndLossOfFocusAPlainWindowDoesNot) {
  const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
  QWindow elsewhere;
  for (const auto style : {Style::panel, Style::plainWindow}) {
    const bool isPlain = style == Style::plainWindow;
    height_ = available.height() + 100;
    open(style);
    for (const int height : {height_, 420, height_}) {
      content_->setImplicitHeight(height);
      const QMargins frame = panel_.window()->frameMargins();
      EXPECT_EQ(!frame.isNull(), isPlain);
      const int highest = available.marginsRemoved(frame).height();
      EXPECT_EQ(panel_.window()->size(), QSize(360, std::min(height, highest)));
      EXPECT_TRUE(isPlain || available.contains(panel_.window()->geometry()));
    }
    QMetaObject::invokeMethod(content_->property("menu").value<QObject*>(), "open");
    QTest::keyClick(panel_.window(), Qt::Key_Escape); // closes only the menu
    EXPECT_TRUE(panel_.isOpen());
    QTest::keyClick(panel_.window(), Qt::Key_Escape);
    EXPECT_EQ(panel_.isOpen(), isPlain);

    open(style);
    focus(elsewhere);
    EXPECT_EQ(panel_.isOpen(), isPlain);
  }
}

TEST_F(PanelShellTest, TheClickThatClosedItDoesNotReopenIt) {
  QWindow elsewhere;
  for (const auto& [delay, isReopened] :
       {std::pair{milliseconds(200), false}, {PanelWindow::kClickDuration + milliseconds(1), true}}) {
    open(Style::panel);
    focus(elsewhere);
    clock_.advance(delay);
    panel_.toggle(); // the icon's report of the same click
    EXPECT_EQ(panel_.isOpen(), isReopened);
    panel_.toggle();
    EXPECT_EQ(panel_.isOpen(), !isReopened);
  }
}

TEST_F(PanelShellTest, AScreenReaderThatStartsLaterFindsWhatIsThere) {
  QAccessible::setActive(false);
  installAccessiblePlaceholders();
  open(Style::panel);
  EXPECT_EQ(QAccessible::queryAccessibleInterface(content_)->role(), QAccessible::NoRole);
  QAccessible::setActive(true);
  EXPECT_EQ(QAccessible::queryAccessibleInterface(content_)->role(), QAccessible::Pane);
}

TEST(PanelPlacement, IsAtTheIconOrInThePointersCorner) {
  const ScreenArea barOnTop{.geometry = {0, 0, 1920, 1080}, .available = {0, 32, 1920, 1048}};
  const ScreenArea barAtTheLeft{.geometry = {0, 0, 1920, 1080}, .available = {64, 0, 1856, 1080}};
  // Right of the others, lower, and with scale 2: its logical size leaves gaps around it.
  const ScreenArea scaled{.geometry = {1920, 200, 1280, 720}, .available = {1920, 200, 1280, 680}};

  const struct {
    QList<ScreenArea> screens;
    QRect icon;
    QPoint pointer;
    QRect panel;
  } cases[] = {
      {{barOnTop}, {1890, 4, 24, 24}, {}, {1560, 32, 360, 600}},
      {{barAtTheLeft}, {20, 1040, 24, 24}, {}, {64, 440, 360, 600}},
      {{barOnTop, scaled}, {3000, 890, 24, 24}, {}, {2832, 280, 360, 600}},
      {{barAtTheLeft}, {}, {30, 1070}, {64, 480, 360, 600}},
      {{barOnTop, scaled}, {}, {3100, 150}, {2840, 200, 360, 600}},
  };

  for (const auto& [screens, icon, pointer, panel] : cases)
    EXPECT_EQ(panelGeometry(screens, icon, pointer, {360, 600}), panel);
}

TEST_F(PanelShellTest, AWindowStandsInForTheTrayWhichClosesWithTheProgram) {
  const auto icon = [] { return QRect(100, 0, 20, 20); };
  const auto quit = [this] { ++quits_; };
  PanelPresence presence(panel_, icon, quit, milliseconds(0));
  presence.setTrayShown(true);
  presence.setTrayShown(false); // the tray restarts
  presence.setTrayShown(true);
  settle();
  EXPECT_FALSE(panel_.isOpen());
  presence.show();
  EXPECT_EQ(panel_.style(), Style::panel);
  EXPECT_EQ(panel_.window()->y(), 20);
  presence.setTrayShown(false);
  EXPECT_TRUE(QTest::qWaitFor([&] { return panel_.style() == Style::plainWindow; }));
  presence.setTrayShown(true);
  presence.show();
  EXPECT_EQ(panel_.style(), Style::plainWindow) << "the user saw it change";
  panel_.window()->close();
  EXPECT_EQ(quits_, 0) << "the icon is there";

  presence.setTrayShown(false);
  presence.show(); // without waiting for the tray
  EXPECT_EQ(panel_.style(), Style::plainWindow);
  panel_.window()->close();
  EXPECT_EQ(quits_, 1);
  presence.end();
  presence.clickIcon({});
  presence.show();
  EXPECT_FALSE(panel_.isOpen()) << "the program has ended";
}

} // namespace
} // namespace sonvel::ui
