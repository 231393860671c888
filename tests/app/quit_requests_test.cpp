#include "app/fake_session_manager.h"
#include "panel/line_process.h"
#include "panel/private_bus.h"
#include "session/event_wait.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace sonvel {

namespace {

using session::waitUntil;
using ::testing::ElementsAre;
using testing::FakeSessionManager;
using testing::LineProcess;
using ::testing::Optional;
using testing::PrivateBus;

class QuitRequestsTest : public ::testing::Test {
 protected:
  [[nodiscard]] LineProcess start(const std::string& mode = "") const {
    session::Environment environment = bus_.environment();
    environment["DESKTOP_AUTOSTART_ID"] = "autostart-7";
    return {SONVEL_QUIT_REQUESTS, {mode}, environment};
  }

  // What the kernel tells of a process's signals, one bit each.
  [[nodiscard]] static std::uint64_t signalMask(LineProcess& process, const std::string& field) {
    std::ifstream status("/proc/" + std::to_string(process.process().pid()) + "/status");
    for (std::string key, value; status >> key && std::getline(status, value);)
      if (key == field + ":") return std::stoull(value, nullptr, 16);
    return 0;
  }

  PrivateBus bus_;
};

TEST_F(QuitRequestsTest, tellsEachSignalAndOutlivesIt) {
  LineProcess process = start();
  ASSERT_TRUE(process.awaitLine("ready"));
  for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGTERM}) {
    process.process().signal(number);
    EXPECT_THAT(process.nextLine(), Optional(std::string("quit"))) << strsignal(number);
  }
  process.send("finish");
  EXPECT_THAT(process.nextLine(), Optional(std::string("done")));
  EXPECT_THAT(process.exitCode(), Optional(3));
}

TEST_F(QuitRequestsTest, swallowsSignalsToTheEnd) {
  LineProcess process = start("late");
  ASSERT_TRUE(process.awaitLine("ready"));
  process.send("finish");
  ASSERT_TRUE(process.awaitLine("done"));
  process.process().signal(SIGTERM);
  process.send("end");
  EXPECT_THAT(process.exitCode(), Optional(3));
}

TEST_F(QuitRequestsTest, leavesAnIgnoredHangUpIgnored) {
  LineProcess process("/usr/bin/nohup", {SONVEL_QUIT_REQUESTS}, bus_.environment());
  ASSERT_TRUE(process.awaitLine("ready"));
  constexpr std::uint64_t kHangUp = 1U << (SIGHUP - 1);
  EXPECT_EQ(signalMask(process, "SigIgn") & kHangUp, kHangUp);
}

TEST_F(QuitRequestsTest, blocksNoSignalsOfChildren) {
  LineProcess process = start("child");
  EXPECT_THAT(process.nextLine(), Optional(std::string("SigBlk:\t0000000000000000")));
}

TEST_F(QuitRequestsTest, turnsTheApplicationsOwnQuitIntoARequest) {
  LineProcess process = start("self");
  ASSERT_TRUE(process.awaitLine("ready"));
  EXPECT_THAT(process.nextLine(), Optional(std::string("quit")));
  process.process().signal(SIGTERM);
  EXPECT_THAT(process.nextLine(), Optional(std::string("quit")));
}

TEST_F(QuitRequestsTest, letsTheSessionManagerWaitUntilAllIsDone) {
  int argc = 0;
  const QCoreApplication application(argc, nullptr);
  FakeSessionManager manager(bus_.connect("manager"));
  LineProcess process = start();
  ASSERT_TRUE(process.awaitLine("ready"));
  ASSERT_TRUE(waitUntil([&] { return !manager.registrations().empty(); }));
  EXPECT_THAT(manager.registrations(), ElementsAre("com.quellmarsh.sonvel autostart-7"));

  // Another client may object: agreed at once, and nothing quits.
  // Asked again only where it didn't listen yet.
  const auto isAnswered = [&] { return !manager.responses().empty(); };
  ASSERT_TRUE(waitUntil([&] {
    manager.tellClient("QueryEndSession", {0U});
    return waitUntil(isAnswered, std::chrono::milliseconds(500));
  }));
  const auto before = manager.responses().size();

  manager.tellClient("EndSession", {0U});
  EXPECT_THAT(process.nextLine(), Optional(std::string("quit")));
  process.process().signal(SIGTERM); // whatever it had answered is on its way before it tells this
  EXPECT_THAT(process.nextLine(), Optional(std::string("quit")));
  QCoreApplication::processEvents();
  EXPECT_EQ(manager.responses().size(), before);

  process.send("finish");
  EXPECT_TRUE(waitUntil([&] { return manager.responses().size() == before + 1; }));
  EXPECT_TRUE(manager.responses().last());
  EXPECT_THAT(process.exitCode(), Optional(3));
}

TEST_F(QuitRequestsTest, quitsWhenTheSessionManagerStopsIt) {
  int argc = 0;
  const QCoreApplication application(argc, nullptr);
  FakeSessionManager manager(bus_.connect("manager"));
  LineProcess process = start();
  ASSERT_TRUE(process.awaitLine("ready"));
  EXPECT_TRUE(waitUntil([&] {
    manager.tellClient("Stop", {});
    return process.nextLine(std::chrono::milliseconds(50)) == "quit";
  }));
}

} // namespace

} // namespace sonvel
