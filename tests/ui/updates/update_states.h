#pragma once

#include "platform/update_session.h"

#include <string>
#include <vector>

namespace sonvel {

/// One state that the window can show, and a name for it.
struct NamedState {
  std::string name;
  UpdateState state;
};

inline constexpr UpdateFailure kLastFailure = UpdateFailure::noPackageInstaller;

/// Every stage that is seen, and those that look different for a package.
inline std::vector<NamedState> visibleStates() {
  const auto at = [](UpdateStage stage, bool isPackage = false) {
    return UpdateState{.stage = stage,
                       .isVisible = true,
                       .isPackage = isPackage,
                       .installedVersion = "1.0",
                       .offeredVersion = "1.1",
                       .notes = "What is new:\n\n\u2022 Applications keep their volume over a restart.\n"
                                "\u2022 The panel opens where the tray icon is, on every screen.\n"
                                "\u2022 Streams that end while they are moved are no longer lost.",
                       .receivedBytes = stage == UpdateStage::downloading ? 5'300'000 : 0,
                       .totalBytes = 12'400'000,
                       .failure = stage == UpdateStage::failed ? std::optional(UpdateFailure::wrongSignature)
                                                               : std::nullopt};
  };
  UpdateState withLongNotes = at(UpdateStage::available);
  for (int line = 1; line <= 40; ++line)
    withLongNotes.notes += "\n\u2022 Change " + std::to_string(line);
  UpdateState withoutNotes = at(UpdateStage::available);
  withoutNotes.notes.clear();
  return {{"checking", at(UpdateStage::checking)},
          {"up-to-date", at(UpdateStage::upToDate)},
          {"needs-newer-system", at(UpdateStage::needsNewerSystem)},
          {"available", at(UpdateStage::available)},
          {"available-long-notes", withLongNotes},
          {"available-without-notes", withoutNotes},
          {"downloading", at(UpdateStage::downloading)},
          {"verifying", at(UpdateStage::verifying)},
          {"ready", at(UpdateStage::ready)},
          {"ready-package", at(UpdateStage::ready, true)},
          {"installing", at(UpdateStage::installing)},
          {"restarting", at(UpdateStage::restarting)},
          {"handed-over", at(UpdateStage::handedOver, true)},
          {"failed", at(UpdateStage::failed)}};
}

} // namespace sonvel
