#include "model/clock_sleep.h"

#include "platform/relay.h"

#include <optional>
#include <utility>

namespace sonvel {

/// Used on the main thread alone. The clock may wake it at any time; the relay drops a wake that comes when
/// the wait is over.
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
  // Both may come, in any order: the second finds the wait over or gone.
  const auto wake = wait_->relay.bind<>([wait = wait_.get()] {
    if (wait->waiter) wait->end();
  });
  wait_->timer = clock_.callAfter(duration_, wake);
  wait_->cancelled.emplace(cancellation_, wake);
}

} // namespace sonvel
