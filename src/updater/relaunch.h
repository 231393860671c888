#pragma once

#include "platform/update_session.h"

#include <QProcessEnvironment>
#include <QString>
#include <chrono>
#include <filesystem>
#include <optional>

namespace sonvel::updater {

/// `environment` without everything that an AppImage put there for itself: its own variables, and every part
/// of a list that lies in its mount, which is another's to make once the image is unmounted.
QProcessEnvironment environmentOutsideImage(const QProcessEnvironment& environment);

/// Starts the new version of the program, and goes back to the previous one unless the new one comes up and
/// stays. Main thread.
class Relaunch {
 public:
  /// When a new version has proved itself.
  struct Trial {
    std::chrono::milliseconds comesUpWithin{30'000}; ///< until it owns the program's name on the session bus
    std::chrono::milliseconds staysFor{60'000};      ///< counted from then
    std::chrono::milliseconds endsWithin{5'000};     ///< when it is asked to end; then it is killed
  };

  Relaunch() = default;

  explicit Relaunch(Trial trial)
      : trial_(trial) {}

  void request(std::filesystem::path program) { program_ = std::move(program); }

  bool isRequested() const noexcept { return program_.has_value(); }

  /// Starts the requested program, without this one's AppImage environment, and watches it from an event
  /// loop. If it can't be started, doesn't come up in time or dies before it has proved itself, the previous
  /// program is put back and started, and told why. Ends without a decision if the session bus goes, as it
  /// does when the user logs out. To be called last before the process ends, when it has given up all that
  /// two copies of the program would compete for. False if no program was left running.
  bool perform() const;

 private:
  Trial trial_;
  std::optional<std::filesystem::path> program_;
};

/// Why this program was put back in the place of a newer version; none if it wasn't. Only the first call
/// tells.
std::optional<UpdateFailure> takeReasonOfReturn();

} // namespace sonvel::updater
