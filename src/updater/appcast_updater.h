#pragma once

#include "platform/updater.h"
#include "updater/main_thread.h"
#include "updater/update_cycle.h"

#include <chrono>
#include <functional>
#include <memory>

namespace sonvel::updater {

/// Calls once a day, counted over all runs of the program, and every hour until a call has led to a finished
/// check. Looks at the calendar at least every hour, so that time in which the computer slept counts. Main
/// thread.
class DailySchedule {
 public:
  using CalendarTime = std::function<std::chrono::system_clock::time_point()>;

  /// `clock` and `preferences` live longer. Never calls `due` from inside this call.
  DailySchedule(Clock& clock, Preferences& preferences, CalendarTime calendarTime, std::function<void()> due);

  /// The check of this day is finished.
  void noteDone();

 private:
  std::chrono::seconds untilDue() const;
  void wait(std::chrono::seconds delay);
  void look();

  Clock& clock_;
  Preferences& preferences_;
  CalendarTime calendarTime_;
  std::function<void()> due_;
  std::unique_ptr<Timer> timer_;
  Relay relay_{onMainThread()};
};

/// An updater over an appcast feed, without a surface if `makeSurface` is empty. When it has run long enough,
/// it deletes the previous program, which is kept in case this one does not work; if it was itself put back,
/// it shows why.
class AppcastUpdater final : public StandardUpdater {
 public:
  AppcastUpdater(const UpdaterEnvironment& environment, const UpdateSource& source,
                 std::weak_ptr<const UpdaterDelegate> delegate, const MakeUpdateSurface& makeSurface);

  void checkForUpdates() override;

  UpdateCycle& cycle() noexcept { return cycle_; }

 private:
  std::set<std::string> allowedChannels() const;

  std::weak_ptr<const UpdaterDelegate> delegate_;
  UpdateCycle cycle_;
  DailySchedule schedule_;
  std::unique_ptr<Timer> proof_;
  std::unique_ptr<UpdateSurface> surface_;
  Relay relay_{onMainThread()};
};

/// Makes updaters of one kind.
class AppcastUpdaterProvider final : public UpdaterProvider {
 public:
  AppcastUpdaterProvider(UpdaterEnvironment environment, MakeUpdateSurface makeSurface);

  std::unique_ptr<StandardUpdater> startUpdater(const UpdateSource& source,
                                                std::weak_ptr<const UpdaterDelegate> delegate) override;

 private:
  UpdaterEnvironment environment_;
  MakeUpdateSurface makeSurface_;
};

} // namespace sonvel::updater
