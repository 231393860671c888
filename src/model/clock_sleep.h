#pragma once

#include "platform/clock.h"
#include "platform/executor.h"

#include <coroutine>
#include <stop_token>

namespace sonvel {

/// Suspends a coroutine of the main thread for a time. Await once; the coroutine resumes on the main thread.
/// Cancelling ends the sleep early, without an error.
class ClockSleep {
 public:
  /// The clock and the executor outlive this object.
  ClockSleep(Clock& clock, Executor& mainThread, Clock::Duration duration, std::stop_token cancellation);

  bool await_ready() const noexcept { return cancellation_.stop_requested(); }

  void await_suspend(std::coroutine_handle<> waiter);

  void await_resume() const noexcept {}

 private:
  struct Wait;

  Clock& clock_;
  Executor& mainThread_;
  Clock::Duration duration_;
  std::stop_token cancellation_;
  std::shared_ptr<Wait> wait_; ///< otherwise owned only by the sleeping coroutine
};

} // namespace sonvel
