#include "session/event_wait.h"
#include "simulated/manual_clock.h"
#include "ui/shell/journal.h"
#include "ui/shell/panel_presence.h"
#include "ui/shell/panel_window.h"

#include <gmock/gmock.h>

#include <QGuiApplication>
#include <QQuickWindow>
#include <chrono>
#include <optional>

namespace sonvel::ui {

namespace {

using std::chrono::milliseconds;
using ::testing::Optional;
using Style = PanelWindow::Style;

class PanelPresenceTest : public ::testing::Test {
 protected:
  [[nodiscard]] PanelPresence presence(milliseconds trayPatience) {
    return {window_, [] { return QRect(100, 0, 20, 20); }, [this] { ++quits_; }, trayPatience};
  }

  [[nodiscard]] bool becomes(std::optional<Style> style) {
    return session::waitUntil([&] { return window_.style() == style; });
  }

  static constexpr milliseconds kNone{0};
  static constexpr milliseconds kEndless{std::chrono::hours(1)};

  int argc_ = 0;
  QGuiApplication application_{argc_, nullptr};
  simulated::ManualClock clock_;
  testing::Journal journal_;
  PanelWindow window_{{.source = QUrl::fromLocalFile(SONVEL_PANEL_CONTENT),
                       .properties = {{"journal", QVariant::fromValue<QObject*>(&journal_)}}},
                      clock_};
  int quits_ = 0;
};

TEST_F(PanelPresenceTest, isAtTheIconWhileThereIsATray) {
  PanelPresence presence = this->presence(kNone);
  presence.setTrayShown(true);
  QCoreApplication::processEvents();
  EXPECT_FALSE(window_.isOpen());
  presence.clickIcon();
  EXPECT_THAT(window_.style(), Optional(Style::panel));
  EXPECT_EQ(window_.window()->y(), 20);
  presence.show();
  EXPECT_TRUE(window_.isOpen());
  presence.clickIcon();
  EXPECT_FALSE(window_.isOpen());
  presence.show();
  EXPECT_THAT(window_.style(), Optional(Style::panel));
  window_.window()->close();
  EXPECT_EQ(quits_, 0);
}

TEST_F(PanelPresenceTest, isAWindowWithoutATrayAndEndsWithIt) {
  PanelPresence presence = this->presence(kNone);
  presence.setTrayShown(false);
  ASSERT_TRUE(becomes(Style::plainWindow));
  window_.window()->close();
  EXPECT_EQ(quits_, 1);
}

TEST_F(PanelPresenceTest, waitsForATrayThatComesLater) {
  PanelPresence presence = this->presence(kEndless);
  presence.setTrayShown(false);
  QCoreApplication::processEvents();
  EXPECT_FALSE(window_.isOpen());
  presence.show(); // unless it is asked for
  EXPECT_THAT(window_.style(), Optional(Style::plainWindow));
  presence.setTrayShown(true);
  window_.window()->close();
  EXPECT_EQ(quits_, 0); // the icon is there
}

TEST_F(PanelPresenceTest, becomesAWindowWhenTheTrayGoes) {
  PanelPresence presence = this->presence(kNone);
  presence.setTrayShown(true);
  presence.show();
  ASSERT_THAT(window_.style(), Optional(Style::panel));
  presence.setTrayShown(false);
  EXPECT_TRUE(becomes(Style::plainWindow));
  presence.setTrayShown(true);
  presence.show();
  EXPECT_THAT(window_.style(), Optional(Style::plainWindow)); // as the user sees it
}

TEST_F(PanelPresenceTest, staysClosedWhenTheProgramEnds) {
  PanelPresence presence = this->presence(kNone);
  presence.setTrayShown(true);
  presence.clickIcon();
  presence.end();
  EXPECT_FALSE(window_.isOpen());
  presence.clickIcon();
  presence.show();
  presence.setTrayShown(false);
  presence.show();
  QCoreApplication::processEvents();
  EXPECT_FALSE(window_.isOpen());
}

TEST_F(PanelPresenceTest, bearsATrayThatRestarts) {
  PanelPresence presence = this->presence(kNone);
  presence.setTrayShown(true);
  presence.setTrayShown(false);
  presence.setTrayShown(true);
  QCoreApplication::processEvents();
  EXPECT_FALSE(window_.isOpen());
}

} // namespace

} // namespace sonvel::ui
