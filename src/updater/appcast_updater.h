#pragma once

#include "platform/updater.h"
#include "updater/daily_schedule.h"
#include "updater/update_cycle.h"

#include <memory>

namespace sonvel::updater {

/// An updater over an appcast feed, without a surface if `makeSurface` is empty. When it starts, the program
/// has started: it forgets the program of before.
class AppcastUpdater final : public StandardUpdater {
 public:
  AppcastUpdater(const UpdaterEnvironment& environment, const UpdateSource& source,
                 std::weak_ptr<const UpdaterDelegate> delegate, const MakeUpdateSurface& makeSurface);

  void checkForUpdates() override;

  UpdateCycle& cycle() noexcept { return cycle_; }

 private:
  std::set<std::string> allowedChannels() const;
  void noteCheck(bool succeeded);

  std::weak_ptr<const UpdaterDelegate> delegate_;
  UpdateCycle cycle_;
  DailySchedule schedule_;
  std::unique_ptr<UpdateSurface> surface_;
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
