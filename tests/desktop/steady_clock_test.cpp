#include "desktop/steady_clock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>

namespace sonvel::desktop {
namespace {

using namespace std::chrono_literals;

TEST(SteadyClock, WakesWhenDueOnItsOwnThreadAlsoBeforeWhatItWaitsFor) {
  SteadyClock clock;
  const auto start = clock.now();
  const auto far = clock.callAfter(1h, [] { ADD_FAILURE() << "an hour early"; });
  std::atomic<int> wakes = 0;
  std::thread::id woken;
  std::latch done(1);
  const auto late = clock.callAfter(50ms, [&] {
    EXPECT_EQ(wakes, 2);
    woken = std::this_thread::get_id();
    done.count_down();
  });
  const auto now = clock.callAfter(0ns, [&] { ++wakes; });
  const auto past = clock.callAfter(-1h, [&] { ++wakes; });
  done.wait();
  EXPECT_NE(woken, std::this_thread::get_id());
  EXPECT_GE(clock.now() - start, 50ms);
}

TEST(SteadyClock, CancelledTimersLetGoOfWhatTheyHoldAndAreNotWoken) {
  SteadyClock clock;
  const auto held = std::make_shared<int>();
  const auto fail = [held] { ADD_FAILURE() << "cancelled, and called"; };
  auto endless = clock.callAfter(Clock::Duration::max(), fail);
  auto inner = std::shared_ptr<Timer>(clock.callAfter(1h, fail));
  auto outer = clock.callAfter(1h, [inner = std::move(inner)] {});
  EXPECT_EQ(held.use_count(), 4);
  endless.reset();
  outer.reset(); // cancels the inner one
  EXPECT_EQ(held.use_count(), 2);
}

} // namespace
} // namespace sonvel::desktop
