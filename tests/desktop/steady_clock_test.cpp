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

TEST(SteadyClock, WakesOnceAfterTheDelayOnItsOwnThread) {
  SteadyClock clock;
  std::promise<std::thread::id> woken;
  const auto start = clock.now();
  const auto timer = clock.callAfter(3ms, [&] { woken.set_value(std::this_thread::get_id()); });
  EXPECT_NE(woken.get_future().get(), std::this_thread::get_id());
  EXPECT_GE(clock.now() - start, 3ms);
  waitForClock(clock);
}

TEST(SteadyClock, WakesInTheOrderOfTime) {
  SteadyClock clock;
  std::vector<char> order;
  Clock::TimePoint before;
  Clock::TimePoint after;
  std::vector<std::unique_ptr<Timer>> timers;
  // Should this thread be held up between its two questions, the order is open: then it asks again.
  do {
    timers.clear();
    const Pause pause(clock);
    order.clear();
    before = clock.now();
    timers.push_back(clock.callAfter(20ms, [&] { order.push_back('c'); }));
    timers.push_back(clock.callAfter(0ns, [&] { order.push_back('a'); }));
    timers.push_back(clock.callAfter(-1h, [&] { order.push_back('b'); }));
    after = clock.now();
  } while (after - before >= 20ms);

  std::latch done(1);
  timers.push_back(clock.callAfter(20ms, [&] { done.count_down(); }));
  done.wait();
  EXPECT_EQ(order, (std::vector{'a', 'b', 'c'}));
}

TEST(SteadyClock, CancelsWhatHasNotBegun) {
  SteadyClock clock;
  std::atomic<int> wakes = 0;
  const auto held = std::make_shared<int>();
  auto far = clock.callAfter(1h, [&wakes, held] { ++wakes; });
  auto endless = clock.callAfter(Clock::Duration::max(), [&wakes, held] { ++wakes; });
  {
    const Pause pause(clock);
    const auto due = clock.callAfter(0ns, [&wakes, held] { ++wakes; });
    EXPECT_EQ(held.use_count(), 4);
  }
  far.reset();
  endless.reset();
  EXPECT_EQ(held.use_count(), 1);
  waitForClock(clock);
  EXPECT_EQ(wakes, 0);
}

TEST(SteadyClock, MakesAndCancelsAppointmentsInsideAWake) {
  SteadyClock clock;
  std::unique_ptr<Timer> own;
  std::unique_ptr<Timer> next;
  std::latch done(1);
  std::atomic<bool> wasCancelledWoken = false;
  auto other = clock.callAfter(1h, [&] { wasCancelledWoken = true; });
  {
    const Pause pause(clock);
    own = clock.callAfter(0ns, [&] {
      own.reset();
      other.reset();
      next = clock.callAfter(0ns, [&] { done.count_down(); });
    });
  }
  done.wait();
  EXPECT_FALSE(wasCancelledWoken);
}

TEST(SteadyClock, MayCancelAnotherAppointmentByCancellingOne) {
  SteadyClock clock;
  const auto held = std::make_shared<int>();
  auto inner = std::shared_ptr<Timer>(clock.callAfter(1h, [held] {}));
  auto outer = clock.callAfter(1h, [inner = std::move(inner)] {});
  outer.reset();
  EXPECT_EQ(held.use_count(), 1);
}

TEST(SteadyClock, EndsInOrder) {
  const auto held = std::make_shared<int>();
  auto isFinished = std::make_shared<std::atomic<bool>>(false);
  std::unique_ptr<Timer> pending;
  std::unique_ptr<Timer> running;
  {
    SteadyClock clock;
    std::latch begun(1);
    pending = clock.callAfter(1h, [held] {});
    running = clock.callAfter(0ns, [&] {
      begun.count_down();
      for (int i = 0; i < 100; ++i)
        std::this_thread::yield();
      *isFinished = true;
    });
    begun.wait();
  }
  EXPECT_TRUE(*isFinished);
  EXPECT_EQ(held.use_count(), 1);
  pending.reset();
}

TEST(SteadyClock, ServesThreadsAtTheSameTime) {
  constexpr int kRounds = 500;
  SteadyClock clock;
  std::array<std::atomic<int>, 2> kept{};
  std::atomic<int> cancelled = 0;
  std::latch done(2 * kRounds);
  const auto work = [&](std::atomic<int>& mine, std::vector<std::unique_ptr<Timer>>& timers) {
    for (int i = 0; i < kRounds; ++i) {
      timers.push_back(clock.callAfter(std::chrono::microseconds(i % 7), [&] {
        ++mine;
        done.count_down();
      }));
      const auto dropped = clock.callAfter(std::chrono::microseconds(i % 3), [&] { ++cancelled; });
    }
  };
  std::array<std::vector<std::unique_ptr<Timer>>, 2> timers;
  std::thread first([&] { work(kept[0], timers[0]); });
  std::thread second([&] { work(kept[1], timers[1]); });
  first.join();
  second.join();
  done.wait();
  EXPECT_EQ(kept[0], kRounds);
  EXPECT_EQ(kept[1], kRounds);
  EXPECT_LE(cancelled, 2 * kRounds);
}

} // namespace
} // namespace sonvel::desktop
