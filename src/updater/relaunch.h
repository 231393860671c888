#pragma once

#include "platform/update_run.h"

#include <QProcessEnvironment>
#include <QString>
#include <chrono>
#include <filesystem>
#include <optional>

namespace sonvel::updater {

/// `environment` without an AppImage's additions: its own variables, and all list entries inside its mount,
/// which another user could recreate after unmounting.
QProcessEnvironment environmentOutsideImage(const QProcessEnvironment& environment);

/// Starts the new version and restores the previous one unless the new one starts up and keeps running. Main
/// thread.
class Relaunch {
 public:
  /// When a new version counts as working.
  struct Trial {
    std::chrono::milliseconds comesUpWithin{30'000}; ///< to own the program's name on the session bus
    std::chrono::milliseconds staysFor{60'000};      ///< after that
    std::chrono::milliseconds endsWithin{5'000};     ///< to quit when asked; then it is killed
  };

  Relaunch() = default;

  explicit Relaunch(Trial trial)
      : trial_(trial) {}

  void request(std::filesystem::path program) { program_ = std::move(program); }

  bool isRequested() const noexcept { return program_.has_value(); }

  /// Starts the requested program without this one's AppImage environment, and watches it from an event loop.
  /// If it can't be started, does not come up in time or dies during the trial, restores and starts the
  /// previous program and tells it why. Ends without a decision if the session bus goes, as at logout. Call
  /// last before the process ends, when everything is released for which two copies would compete. False if
  /// no program was left running.
  bool perform() const;

 private:
  Trial trial_;
  std::optional<std::filesystem::path> program_;
};

/// Why this program was restored in place of a newer version; none if it was not. Only the first call returns
/// it.
std::optional<UpdateFailure> takeReasonOfReturn();

} // namespace sonvel::updater
