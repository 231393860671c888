#pragma once

#include "audio/record_hash.h"
#include "platform/audio_types.h"

#include <optional>
#include <string>

namespace sonvel {

/// One process that plays sound, as it was found. Equal records agree in every field: a process whose display
/// name has changed between two looks gives two different records.
struct AudioApp {
  AudioObjectID objectID = kAudioObjectUnknown; ///< the process object; not the same after a restart
  std::int32_t pid = 0;                         ///< 0 if it can't be read
  std::string bundleID;                         ///< never empty: "pid " and the pid where there is none
  std::string name;                             ///< what the user sees
  std::optional<std::string> parentBundleID;    ///< the application that a helper process belongs to
  bool isPlayingOutput = true;

  AudioObjectID id() const noexcept { return objectID; }

  bool operator==(const AudioApp&) const = default;
};

/// What an application is recognised by, also after a restart, and what its helper processes share with it.
inline std::string stableKey(const AudioApp& app) {
  return app.parentBundleID.value_or(app.bundleID);
}

} // namespace sonvel

template <> struct std::hash<sonvel::AudioApp> {
  std::size_t operator()(const sonvel::AudioApp& app) const noexcept {
    return sonvel::recordHash(app.objectID, app.pid, app.bundleID, app.name, app.parentBundleID,
                              app.isPlayingOutput);
  }
};
