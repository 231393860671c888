#include "simulated/manual_clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace sonvel::simulated {

using namespace std::chrono_literals;
using testing::ElementsAre;

class ManualClockTest : public testing::Test {
 protected:
  /// Notes the name and the moment when it is woken.
  std::function<void()> note(const std::string& name) {
    return [this, name] {
      const auto moment = std::chrono::duration_cast<std::chrono::milliseconds>(clock.now() - start);
      woken.push_back(name + "@" + std::to_string(moment.count()));
    };
  }

  ManualClock clock;
  const Clock::TimePoint start = clock.now();
  std::vector<std::string> woken;
};

TEST_F(ManualClockTest, WakesInTheOrderOfTheirMomentsAndThenOfAsking) {
  const auto b = clock.callAfter(20ms, note("b"));
  const auto a = clock.callAfter(10ms, note("a"));
  const auto c = clock.callAfter(20ms, note("c"));
  const auto d = clock.callAfter(20ms, note("d"));
  const auto late = clock.callAfter(31ms, note("late"));
  const auto now = clock.callAfter(0ms, note("now"));
  EXPECT_TRUE(woken.empty());
  EXPECT_EQ(clock.pendingCount(), 6U);
  clock.advance(30ms);
  EXPECT_THAT(woken, ElementsAre("now@0", "a@10", "b@20", "c@20", "d@20"));
  EXPECT_EQ(clock.now() - start, 30ms);
  EXPECT_EQ(clock.pendingCount(), 1U);
  clock.advance(1ms);
  EXPECT_EQ(woken.back(), "late@31");
}

TEST_F(ManualClockTest, WakesWhatIsAskedForMeanwhile) {
  std::vector<std::unique_ptr<Timer>> timers;
  timers.push_back(clock.callAfter(10ms, [&] {
    timers.push_back(clock.callAfter(5ms, note("second")));
    timers.push_back(clock.callAfter(25ms, note("too late")));
  }));
  const auto between = clock.callAfter(12ms, note("between"));
  clock.advance(20ms);
  EXPECT_THAT(woken, ElementsAre("between@12", "second@15"));
  EXPECT_EQ(clock.pendingCount(), 1U);
}

TEST_F(ManualClockTest, DestroyedTimerIsNotWokenEvenInTheSameMoment) {
  auto cancelled = clock.callAfter(10ms, note("cancelled"));
  auto first = clock.callAfter(5ms, note("first"));
  auto victim = clock.callAfter(8ms, note("victim"));
  cancelled.reset();
  const auto canceller = clock.callAfter(7ms, [&] { victim.reset(); });
  clock.advance(1s);
  EXPECT_THAT(woken, ElementsAre("first@5"));
  EXPECT_EQ(clock.pendingCount(), 0U);
}

TEST_F(ManualClockTest, TimerMayOutliveTheClock) {
  std::unique_ptr<Timer> timer;
  {
    ManualClock brief;
    timer = brief.callAfter(1ms, note("never"));
  }
  timer.reset();
  EXPECT_TRUE(woken.empty());
}

TEST_F(ManualClockTest, WaitsForAppointmentsOfAnotherThread) {
  EXPECT_FALSE(clock.waitForPending(1, 0ms));
  std::unique_ptr<Timer> timer;
  std::thread other([&] { timer = clock.callAfter(10ms, note("other")); });
  EXPECT_TRUE(clock.waitForPending(1));
  other.join();
  clock.advance(10ms);
  EXPECT_THAT(woken, ElementsAre("other@10"));
}

} // namespace sonvel::simulated
