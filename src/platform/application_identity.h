#pragma once

#include "platform/audio_clients.h"

namespace sonvel {

/// Which application a client of the sound server belongs to.
class ApplicationIdentity {
 public:
  virtual ~ApplicationIdentity() = default;

  /// The application's bundle identifier: what is vouched for beats what the desktop knows, which beats what
  /// the program claims. None if nothing tells. Any thread; may read files, never waits for another program.
  virtual std::optional<std::string> bundleIdentifier(const AudioClient& client) const = 0;
};

} // namespace sonvel
