#pragma once

#include "platform/updater.h"
#include "updater/main_thread.h"
#include "updater/update_cycle.h"

#include <chrono>
#include <functional>
#include <memory>

namespace sonvel::updater {

/// Calls `due` once a day, counted over all runs of the program, and every hour until a check has finished.
/// Compares the calendar time at least hourly, so that time asleep counts. Main thread.
class DailySchedule {
 public:
  using CalendarTime = std::function<std::chrono::system_clock::time_point()>;

  /// `clock` and `preferences` outlive this object. Never calls `due` from the constructor.
  DailySchedule(Clock& clock, Preferences& preferences, CalendarTime calendarTime, std::function<void()> due);

  /// Call when the day's check has finished.
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

/// An updater for an appcast feed; no window if `makeSurface` is empty. After running long enough it deletes
/// the previous program, which is kept in case this one fails; if this program was restored, it shows why.
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

/// Creates AppcastUpdater objects.
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
