#include "model/clock_sleep.h"

#include "platform/relay.h"

#include <optional>
#include <utility>

namespace sonvel {

/// Used only on the main thread. The clock may wake it at any time; the relay drops a wake that comes after
/// the wait's end.
struct ClockSleep::Wait {
  explicit Wait(Executor& mainThread)
      : relay(mainThread) {}

  std::coroutine_handle<> waiter;
  std::unique_ptr<Timer> timer;
  std::optional<std::stop_callback<std::function<void()>>> cancelled;

  Relay relay;

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
  wait_ = std::make_shared<Wait>(mainThread_);
  wait_->waiter = waiter;
  // The clock and the cancellation may both wake it, in any order; the second finds the wait ended or
  // destroyed.
  const auto wake = wait_->relay.bind<>([wait = wait_.get()] {
    if (wait->waiter) wait->end();
  });
  wait_->timer = clock_.callAfter(duration_, wake);
  wait_->cancelled.emplace(cancellation_, wake);
}

} // namespace sonvel
