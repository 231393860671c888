#pragma once

#include "platform/clock.h"
#include "platform/preferences.h"
#include "updater/relay.h"

#include <chrono>
#include <functional>
#include <memory>

namespace sonvel::updater {

/// Says once a day that it is time, over the ends and starts of the program. A day in which nothing came of
/// it counts as none: it says so again every hour. Looks at the calendar every hour at least, so that time
/// in which the computer slept counts. Main thread.
class DailySchedule {
 public:
  using CalendarTime = std::function<std::chrono::system_clock::time_point()>;

  /// `clock` and `preferences` live longer. Never calls `due` from inside this call.
  DailySchedule(Clock& clock, Preferences& preferences, CalendarTime calendarTime, std::function<void()> due);

  /// The day's work is done.
  void noteDone();

 private:
  std::chrono::seconds untilDue() const;
  void wait(std::chrono::seconds delay);
  void look();

  Clock& clock_;
  Preferences& preferences_;
  CalendarTime calendarTime_;
  std::function<void()> due_;
  Relay relay_;
  std::unique_ptr<Timer> timer_;
};

} // namespace sonvel::updater
