#pragma once

#include "platform/clock.h"

#include <thread>

namespace sonvel::desktop {

/// Real time. Wakes run one after another on one thread that lives as long as the clock.
///
/// Destroying a Timer never waits, not even for its own wake when that runs already on the clock's thread:
/// a wake owns what it uses. A Timer may outlive the clock.
class SteadyClock final : public Clock {
 public:
  SteadyClock();

  /// Drops what has not begun and waits for the wake that runs. Not to be called from inside a wake.
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
