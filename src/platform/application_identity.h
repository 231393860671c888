#pragma once

#include "platform/audio_clients.h"

namespace sonvel {

/// Finds the application that a client of the sound server belongs to.
class ApplicationIdentity {
 public:
  virtual ~ApplicationIdentity() = default;

  /// The application's bundle identifier. An identity that the sandbox guarantees comes first, then what the
  /// desktop knows of the process, then what the program says of itself. None if none of them tells. Any
  /// thread; may read files, never waits for another program.
  virtual std::optional<std::string> bundleIdentifier(const AudioClient& client) const = 0;
};

} // namespace sonvel
