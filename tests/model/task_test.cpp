#include "model/clock_sleep.h"
#include "model/model_test.h"

namespace sonvel {
namespace {

class TaskTest : public MixerTest {
 protected:
  /// A task that sleeps a second and then tells what came of it.
  Task sleeper() {
    return startTask(mainThread_, [this](std::stop_token cancellation) {
      return sleepOneSecond(clock_, mainThread_, std::move(cancellation), events_);
    });
  }

  static QCoro::Task<> sleepOneSecond(Clock& clock, Executor& mainThread, std::stop_token cancellation,
                                      std::vector<std::string>& events) {
    events.emplace_back("begun");
    co_await ClockSleep(clock, mainThread, 1s, cancellation);
    EXPECT_TRUE(mainThread.isCurrent());
    events.emplace_back(cancellation.stop_requested() ? "cancelled" : "woken");
  }

  std::vector<std::string> takeEvents() { return std::exchange(events_, {}); }

  std::vector<std::string> events_;
};

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(TaskTest, BeginsAndGoesOnInTheEventLoop) {
  sleeper();
  EXPECT_THAT(takeEvents(), IsEmpty());
  pump();
  EXPECT_THAT(takeEvents(), ElementsAre("begun"));
  pass(1s - 1ns);
  EXPECT_THAT(takeEvents(), IsEmpty());
  std::thread([&] { clock_.advance(1ns); }).join();
  pump();
  EXPECT_THAT(takeEvents(), ElementsAre("woken"));
}

TEST_F(TaskTest, CancellationEndsTheSleepOnceWheneverItComes) {
  for (const bool hasBegun : {false, true}) {
    for (const bool isDue : {false, true}) {
      auto task = sleeper();
      if (hasBegun) pump();
      if (isDue) clock_.advance(1s);
      task.cancel();
      EXPECT_TRUE(settle());
      EXPECT_THAT(takeEvents(), ElementsAre("begun", "cancelled")) << hasBegun << isDue;
      EXPECT_EQ(clock_.pendingCount(), 0U);
      pass(1s);
      EXPECT_THAT(takeEvents(), IsEmpty());
    }
  }
}

TEST_F(TaskTest, TheExecutorRunsEverythingInOrderAtItsEndAtTheLatest) {
  std::vector<int> ran;
  {
    QtExecutor executor;
    EXPECT_TRUE(executor.isCurrent());
    std::thread([&] {
      EXPECT_FALSE(executor.isCurrent());
      executor.post([&] {
        ran.push_back(1);
        executor.post([&] { ran.push_back(3); });
      });
      executor.post([&] { ran.push_back(2); });
    }).join();
    EXPECT_THAT(ran, IsEmpty());
  }
  EXPECT_THAT(ran, ElementsAre(1, 2, 3));
}

} // namespace
} // namespace sonvel
