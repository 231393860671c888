#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace sonvel {

/// A pending call of a Clock. Destroying it cancels the call unless it has begun.
class Timer {
 public:
  virtual ~Timer() = default;
};

/// The time source for everything that waits, so that tests can advance time by hand.
class Clock {
 public:
  using Duration = std::chrono::nanoseconds;
  using TimePoint = std::chrono::time_point<std::chrono::steady_clock, Duration>;

  virtual ~Clock() = default;

  /// Monotonic. Any thread.
  virtual TimePoint now() const = 0;

  /// Calls `wake` once after `delay`, on a thread of the clock, never from inside this call. `wake` must be
  /// short and must not throw; it may call callAfter(). Any thread.
  [[nodiscard]] virtual std::unique_ptr<Timer> callAfter(Duration delay, std::function<void()> wake) = 0;
};

} // namespace sonvel
