#pragma once

#include "platform/clock.h"

#include <thread>

namespace sonvel::desktop {

/// Real time. Wakes run one after another on the clock's own thread.
///
/// Destroying a Timer never waits, not even for its own running wake: so a wake must own what it uses. A
/// Timer may outlive the clock.
class SteadyClock final : public Clock {
 public:
  SteadyClock();

  /// Drops pending wakes and waits for the running one. Not from a wake.
  ~SteadyClock() override;

  SteadyClock(const SteadyClock&) = delete;
  SteadyClock& operator=(const SteadyClock&) = delete;

  TimePoint now() const override;
  [[nodiscard]] std::unique_ptr<Timer> callAfter(Duration delay, std::function<void()> wake) override;

 private:
  class Agenda;
  class Appointment;

  std::shared_ptr<Agenda> agenda_;
  std::thread thread_;
};

} // namespace sonvel::desktop
