#include "model/clock_sleep.h"

#include <optional>
#include <utility>

namespace sonvel {

/// Touched on the main thread alone.
struct ClockSleep::Wait {
  std::coroutine_handle<> waiter;
  std::unique_ptr<Timer> timer;
  std::optional<std::stop_callback<std::function<void()>>> cancelled;

  void end() {
    timer.reset();
    cancelled.reset();
    std::exchange(waiter, nullptr).resume();
  }
};

ClockSleep::ClockSleep(Clock& clock, Executor& mainThread, Clock::Duration duration,
                       std::stop_token cancellation)
    : clock_(clock)
    , mainThread_(mainThread)
    , duration_(duration)
    , cancellation_(std::move(cancellation)) {}

void ClockSleep::await_suspend(std::coroutine_handle<> waiter) {
  wait_ = std::make_shared<Wait>();
  wait_->waiter = waiter;
  // Both may come, in any order: the second finds the wait over or gone.
  const std::function<void()> wake = [&mainThread = mainThread_, weakWait = std::weak_ptr(wait_)] {
    mainThread.post([weakWait] {
      if (const auto wait = weakWait.lock(); wait && wait->waiter) wait->end();
    });
  };
  wait_->timer = clock_.callAfter(duration_, wake);
  wait_->cancelled.emplace(cancellation_, wake);
}

} // namespace sonvel
