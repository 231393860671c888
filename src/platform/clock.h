#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace sonvel {

/// One appointment with a Clock. Destroying it cancels what has not begun.
class Timer {
 public:
  virtual ~Timer() = default;
};

/// Time, as far as the program waits for it. Everything that waits goes through a clock, so that tests can
/// advance time by hand.
class Clock {
 public:
  using Duration = std::chrono::nanoseconds;
  using TimePoint = std::chrono::time_point<std::chrono::steady_clock, Duration>;

  virtual ~Clock() = default;

  /// Monotonic. Any thread.
  virtual TimePoint now() const = 0;

  /// Calls `wake` once, when `delay` has passed, never from inside this call, on a thread of the clock's own.
  /// `wake` must be short and must not throw; it may ask for further appointments. Any thread.
  [[nodiscard]] virtual std::unique_ptr<Timer> callAfter(Duration delay, std::function<void()> wake) = 0;
};

} // namespace sonvel
