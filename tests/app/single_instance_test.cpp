#include "panel/line_process.h"
#include "panel/private_bus.h"

#include <gmock/gmock.h>

#include <QDBusInterface>
#include <array>
#include <chrono>
#include <memory>

namespace sonvel {

namespace {

using std::chrono::milliseconds;
using testing::LineProcess;
using ::testing::Optional;
using testing::PrivateBus;

class SingleInstanceTest : public ::testing::Test {
 protected:
  [[nodiscard]] std::unique_ptr<LineProcess> start(const std::string& mode = "") const {
    return std::make_unique<LineProcess>(SONVEL_SINGLE_INSTANCE, std::vector<std::string>{mode},
                                         bus_.environment());
  }

  PrivateBus bus_;
};

TEST_F(SingleInstanceTest, asksTheFirstToShowItsPanel) {
  const auto first = start();
  ASSERT_THAT(first->nextLine(), Optional(std::string("first")));
  for (int again = 0; again < 2; ++again) {
    const auto second = start();
    EXPECT_THAT(second->nextLine(), Optional(std::string("told")));
    EXPECT_THAT(second->exitCode(), Optional(0));
    EXPECT_THAT(first->nextLine(), Optional(std::string("show")));
  }
}

TEST_F(SingleInstanceTest, quitsOnRequest) {
  const auto first = start();
  ASSERT_THAT(first->nextLine(), Optional(std::string("first")));
  QDBusInterface remote("com.quellmarsh.sonvel", "/com/quellmarsh/sonvel", "com.quellmarsh.sonvel",
                        bus_.connect("asking"));
  EXPECT_EQ(remote.call("Quit").type(), QDBusMessage::ReplyMessage);
  EXPECT_THAT(first->nextLine(), Optional(std::string("quit")));
  EXPECT_THAT(first->exitCode(), Optional(0));
}

TEST_F(SingleInstanceTest, runsWithoutABus) {
  LineProcess alone(SONVEL_SINGLE_INSTANCE, {}, {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"}});
  EXPECT_THAT(alone.nextLine(), Optional(std::string("no bus")));
}

TEST_F(SingleInstanceTest, doesNotHangWithTheFirst) {
  const auto first = start("slow");
  ASSERT_THAT(first->nextLine(), Optional(std::string("first")));
  const auto second = start();
  EXPECT_THAT(second->nextLine(), Optional(std::string("silent")));
  EXPECT_THAT(second->exitCode(), Optional(0));

  // What was asked while it couldn't listen is not lost.
  first->send("go on");
  EXPECT_THAT(first->nextLine(), Optional(std::string("show")));
}

TEST_F(SingleInstanceTest, takesThePlaceOfAFirstThatLeaves) {
  const auto first = start("leaving");
  ASSERT_THAT(first->nextLine(), Optional(std::string("first")));
  const auto second = start();
  ASSERT_THAT(first->nextLine(), Optional(std::string("show")));
  first->send("leave");
  EXPECT_THAT(second->nextLine(), Optional(std::string("first")));
}

TEST_F(SingleInstanceTest, takesThePlaceOfAFirstThatCrashed) {
  const auto first = start();
  ASSERT_THAT(first->nextLine(), Optional(std::string("first")));
  first->process().kill();
  EXPECT_THAT(start()->nextLine(), Optional(std::string("first")));
}

TEST_F(SingleInstanceTest, hasOneWinnerWhenManyStartAtOnce) {
  std::array<std::unique_ptr<LineProcess>, 6> starters;
  for (auto& starter : starters)
    starter = start();
  int firsts = 0;
  int told = 0;
  for (const auto& starter : starters) {
    const auto line = starter->nextLine();
    firsts += line == "first" ? 1 : 0;
    told += line == "told" ? 1 : 0;
  }
  EXPECT_EQ(firsts, 1);
  EXPECT_EQ(told, 5);
}

} // namespace

} // namespace sonvel
