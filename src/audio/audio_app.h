#pragma once

#include "audio/record_hash.h"
#include "platform/audio_types.h"

#include <optional>
#include <string>

namespace sonvel {

/// One process that plays sound, as found at one time. Records are equal if all fields are: a changed display
/// name gives a different record.
struct AudioApp {
  AudioObjectID objectID = kAudioObjectUnknown; ///< the process object; changes when the process restarts
  std::int32_t pid = 0;                         ///< 0 if unreadable
  std::string bundleID;                         ///< never empty: "pid " and the pid if there is none
  std::string name;                             ///< the displayed name
  std::optional<std::string> parentBundleID;    ///< for a helper process, the application it belongs to
  bool isPlayingOutput = true;

  AudioObjectID id() const noexcept { return objectID; }

  bool operator==(const AudioApp&) const = default;
};

/// The key of an application: the same after a restart, and shared by its helper processes.
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
