#pragma once

#include "platform/updater.h"
#include "platform/updater/daily_schedule.h"
#include "platform/updater/update_cycle.h"

#include <functional>
#include <memory>

namespace sonvel::updater {

/// Where the user sees an update and says what becomes of it.
class UpdateSurface {
 public:
  virtual ~UpdateSurface() = default;
};

/// Makes a surface for a cycle, which lives longer.
using MakeUpdateSurface = std::function<std::unique_ptr<UpdateSurface>(UpdateCycle&)>;

/// An updater over an appcast feed. When it starts, the program has started: it forgets the program of
/// before.
class AppcastUpdater final : public Updater {
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
  std::unique_ptr<UpdateSurface> surface_;
};

/// Makes updaters of one kind.
class AppcastUpdaterProvider final : public UpdaterProvider {
 public:
  AppcastUpdaterProvider(UpdaterEnvironment environment, MakeUpdateSurface makeSurface);

  std::unique_ptr<Updater> startUpdater(const UpdateSource& source,
                                        std::weak_ptr<const UpdaterDelegate> delegate) override;

 private:
  UpdaterEnvironment environment_;
  MakeUpdateSurface makeSurface_;
};

} // namespace sonvel::updater
