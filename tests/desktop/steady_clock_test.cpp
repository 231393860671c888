#include "desktop/steady_clock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <latch>
#include <thread>
#include <vector>

namespace sonvel::desktop {
namespace {

using namespace std::chrono_literals;

/// Keeps the clock's thread inside a wake for as long as this object lives.
class Pause {
 public:
  explicit Pause(Clock& clock) {
    timer_ = clock.callAfter(0ns, [state = state_] {
      state->begun.count_down();
      state->over.wait();
    });
    state_->begun.wait();
  }

  ~Pause() { state_->over.count_down(); }

  Pause(const Pause&) = delete;
  Pause& operator=(const Pause&) = delete;

 private:
  struct State {
    std::latch begun{1};
    std::latch over{1};
  };

  std::shared_ptr<State> state_ = std::make_shared<State>();
  std::unique_ptr<Timer> timer_;
};

/// Returns when the clock's thread has done all that was due before.
void waitForClock(Clock& clock) {
  std::latch done(1);
  const auto timer = clock.callAfter(0ns, [&] { done.count_down(); });
  done.wait();
}

TEST(SteadyClock, WakesAfterTheDelayInTheOrderOfTimeOnItsOwnThread) {
  SteadyClock clock;
  std::string order;
  std::promise<std::thread::id> woken;
  const auto start = clock.now();
  std::vector<std::unique_ptr<Timer>> timers;
  {
    const Pause pause(clock);
    timers.push_back(clock.callAfter(50ms, [&] {
      order += 'c';
      woken.set_value(std::this_thread::get_id());
    }));
    timers.push_back(clock.callAfter(0ns, [&] { order += 'b'; }));
    timers.push_back(clock.callAfter(-1h, [&] { order += 'a'; }));
  }
  EXPECT_NE(woken.get_future().get(), std::this_thread::get_id());
  EXPECT_GE(clock.now() - start, 50ms);
  EXPECT_TRUE(order == "bac" || order == "abc") << order; // two were due at once
}

TEST(SteadyClock, CancelledTimersLetGoOfWhatTheyHold) {
  SteadyClock clock;
  std::atomic<int> wakes = 0;
  const auto held = std::make_shared<int>();
  auto far = clock.callAfter(1h, [&wakes, held] { ++wakes; });
  auto endless = clock.callAfter(Clock::Duration::max(), [&wakes, held] { ++wakes; });
  auto inner = std::shared_ptr<Timer>(clock.callAfter(1h, [held] {}));
  auto outer = clock.callAfter(1h, [inner = std::move(inner)] {});
  {
    const Pause pause(clock);
    const auto due = clock.callAfter(0ns, [&wakes, held] { ++wakes; });
    EXPECT_EQ(held.use_count(), 5);
  }
  far.reset();
  endless.reset();
  outer.reset(); // cancels the inner one
  EXPECT_EQ(held.use_count(), 1);
  waitForClock(clock);
  EXPECT_EQ(wakes, 0);
}

TEST(SteadyClock, AWakeMayMakeAndCancelTimersAndIsAwaitedAtTheEnd) {
  std::atomic<bool> isFinished = false;
  std::atomic<bool> wasCancelledWoken = false;
  std::unique_ptr<Timer> own;
  std::unique_ptr<Timer> next;
  std::unique_ptr<Timer> other;
  {
    SteadyClock clock;
    std::latch begun(1);
    other = clock.callAfter(1h, [&] { wasCancelledWoken = true; });
    {
      const Pause pause(clock);
      own = clock.callAfter(0ns, [&] {
        own.reset();
        other.reset();
        next = clock.callAfter(0ns, [&] {
          begun.count_down();
          for (int i = 0; i < 100; ++i)
            std::this_thread::yield();
          isFinished = true;
        });
      });
    }
    begun.wait();
  }
  EXPECT_TRUE(isFinished);
  EXPECT_FALSE(wasCancelledWoken);
}

} // namespace
} // namespace sonvel::desktop
