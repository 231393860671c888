#include "panel/line_process.h"
#include "panel/private_bus.h"
#include "panel/tray_host.h"
#include "panel/virtual_display.h"
#include "session/event_wait.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <functional>
#include <memory>
#include <string>

namespace sonvel::ui {

namespace {

using testing::LineProcess;
using testing::PrivateBus;
using testing::TrayHost;
using ::testing::UnorderedElementsAre;
using testing::VirtualDisplay;

class TrayIconTest : public ::testing::Test {
 protected:
  [[nodiscard]] session::Environment environment() const {
    session::Environment all = bus_.environment();
    all.merge(display_.environment());
    return all;
  }

  // The next line of the program, whose questions to the tray are answered meanwhile.
  std::string nextLine(LineProcess& program) {
    std::optional<std::string> line;
    const bool came = session::waitUntil([&] {
      line = program.nextLine(std::chrono::milliseconds(2));
      return line.has_value();
    });
    return came ? *line : "silence";
  }

  // The one icon in the tray, once it is there.
  QString theIcon(const TrayHost& host) {
    EXPECT_TRUE(session::waitUntil([&] { return host.items().size() == 1; }));
    return host.items().value(0);
  }

  int argc_ = 0;
  QCoreApplication application_{argc_, nullptr};
  PrivateBus bus_;
  VirtualDisplay display_;
};

TEST_F(TrayIconTest, isNamedAndDoesWhatItIsAskedFor) {
  const TrayHost host(bus_.connect("host"));
  LineProcess program(SONVEL_TRAY_ICON, {}, environment());
  EXPECT_EQ(nextLine(program), "unknown");
  EXPECT_EQ(nextLine(program), "shown");
  const QString icon = theIcon(host);
  EXPECT_EQ(host.property(icon, "Title").toString(), "Sonvel");
  EXPECT_EQ(host.toolTipTitle(icon), "Sonvel");
  EXPECT_THAT(host.menu(icon), UnorderedElementsAre("Open Sonvel", "Quit"));

  EXPECT_EQ(host.color(icon), QColor(Qt::blue));
  host.activate(icon);
  EXPECT_EQ(nextLine(program), "clicked");
  EXPECT_EQ(host.color(icon), QColor(Qt::red)); // what it was given meanwhile
  ASSERT_TRUE(host.choose(icon, "Open Sonvel"));
  EXPECT_EQ(nextLine(program), "open");
  ASSERT_TRUE(host.choose(icon, "Quit"));
  EXPECT_EQ(nextLine(program), "quit");
}

TEST_F(TrayIconTest, comesWithTheTrayAndGoesWithIt) {
  LineProcess program(SONVEL_TRAY_ICON, {}, environment());
  EXPECT_EQ(nextLine(program), "unknown");
  EXPECT_EQ(nextLine(program), "not shown");
  for (int round = 0; round < 3; ++round) {
    // A watcher alone shows nothing yet.
    auto host = std::make_unique<TrayHost>(bus_.connect("host"), false);
    ASSERT_TRUE(session::waitUntil([&] { return host->questions() > 0; }));
    host->setHostRegistered(true);
    ASSERT_EQ(nextLine(program), "shown");
    EXPECT_EQ(host->color(theIcon(*host)), QColor(round == 0 ? Qt::blue : Qt::red));
    host->activate(theIcon(*host));
    EXPECT_EQ(nextLine(program), "clicked");
    if (round == 1) {
      host->setHostRegistered(false);
    } else {
      host.reset();
    }
    EXPECT_EQ(nextLine(program), "not shown");
  }
}

TEST_F(TrayIconTest, isNotShownWithoutABus) {
  session::Environment withoutBus = environment();
  withoutBus["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent";
  LineProcess program(SONVEL_TRAY_ICON, {}, withoutBus);
  EXPECT_EQ(nextLine(program), "not shown");
}

} // namespace

} // namespace sonvel::ui
