#pragma once

#include "platform/clock.h"

#include <cstddef>

namespace sonvel::simulated {

/// A clock that stands still until it is told how much time passes. Any thread.
class ManualClock final : public Clock {
 public:
  ManualClock();

  TimePoint now() const override;
  std::unique_ptr<Timer> callAfter(Duration delay, std::function<void()> wake) override;

  /// Lets time pass. Calls every wake that falls due, on the caller's thread, in the order of their moments
  /// and for one moment in the order they were asked for, with now() at that moment; those asked for
  /// meanwhile too. Not from a wake.
  void advance(Duration duration);

  /// How many appointments are open.
  std::size_t pendingCount() const;

  /// Waits in real time until at least `count` appointments are open, for code that makes its appointments
  /// on a thread of its own. False if `deadline` of real time has passed.
  bool waitForPending(std::size_t count, std::chrono::milliseconds deadline = std::chrono::seconds(10)) const;

 private:
  struct State;
  class Appointment;

  std::shared_ptr<State> state_; ///< shared with the appointments, which may outlive the clock
};

} // namespace sonvel::simulated
