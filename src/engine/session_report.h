#pragma once

#include "audio/audio_app.h"

#include <functional>
#include <string>
#include <vector>

namespace sonvel {

/// All there is to show of the session of one application, as it is now.
struct SessionReport {
  std::string key; ///< stableKey of the application

  /// The process that stands for the application; also for a session that has ended the last one known.
  AudioApp app;

  /// The process objects that the session controls; each one addresses it. Empty while the application does
  /// not run, and when there is no session.
  std::vector<AudioObjectID> objectIDs;

  bool exists = false; ///< the application is under control: tap, aggregate device and IOProc are there

  /// One line about what failed last: starting, changing or ending the session. None if that succeeded.
  std::optional<std::string> error;

  /// The device asked for, here or in another mixer; none follows the default device. It stays while that
  /// device is gone.
  std::optional<std::string> outputUID;

  std::optional<std::string> playingUID; ///< the device where it is heard now; none without a session
  bool isOutputConnected = true;         ///< the device asked for is there; true where none is asked for
  bool isPartial = false;                ///< some of its streams can't be controlled and play by themselves
  float gain = 1.0F;                     ///< linear
  bool muted = false;

  bool operator==(const SessionReport&) const = default;
};

/// Takes each new state of a session.
using SessionObserver = std::function<void(SessionReport)>;

} // namespace sonvel
