#pragma once

#include "platform/updater/update_failure.h"

#include <QString>
#include <optional>

namespace sonvel::updater {

/// How far an update has come.
enum class UpdateStage {
  idle,
  checking,
  upToDate,
  needsNewerSystem,
  available, ///< waits for the user to take it
  downloading,
  verifying,
  ready, ///< verified; waits for the user to have it installed
  installing,
  restarting, ///< installed; the program is asked to end and starts again as the new one
  handedOver, ///< the package installer has it
  failed,
};

/// All that there is to show.
struct UpdateState {
  UpdateStage stage = UpdateStage::idle;
  bool isVisible = false; ///< whether the user is to see it: what they asked for, and what they may take
  bool isPackage = false; ///< it goes to a package installer
  QString installedVersion;
  QString offeredVersion;
  QString notes; ///< plain text
  qint64 receivedBytes = 0;
  qint64 totalBytes = 0;
  std::optional<UpdateFailure> failure; ///< of stage failed

  friend bool operator==(const UpdateState&, const UpdateState&) = default;
};

} // namespace sonvel::updater
