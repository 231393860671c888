#pragma once

#include "audio/audio_app.h"

#include <functional>
#include <string>
#include <vector>

namespace sonvel {

/// The current state of one application's session, as far as it is shown.
struct SessionReport {
  std::string key; ///< stableKey of the application

  /// With the process that represents the application; for an ended session, the last one.
  AudioApp app;

  /// The process objects that the session controls; each identifies it. Empty while the application does not
  /// run, and without a session.
  std::vector<AudioObjectID> objectIDs;

  bool exists = false; ///< tap, aggregate device and IOProc exist

  /// One line about the last failed start, change or removal. None after a success.
  std::optional<std::string> error;

  /// The requested device, here or in another mixer; none follows the default device. Unchanged while that
  /// device is gone.
  std::optional<std::string> outputUID;

  std::optional<std::string> playingUID; ///< the device where it is heard now; none without a session
  bool isOutputConnected = true;         ///< the requested device is connected, or none is requested
  bool isPartial = false;                ///< some of its streams can't be controlled and play unchanged
  float gain = 1.0F;                     ///< linear
  bool muted = false;

  bool operator==(const SessionReport&) const = default;
};

/// Receives each new state of a session.
using SessionObserver = std::function<void(SessionReport)>;

} // namespace sonvel
