#pragma once

#include <string>

namespace sonvel {

/// What the status line is about. The views say it in words.
struct MixerStatus {
  enum class Event {
    nothing,           ///< not known yet
    noAppsYet,         ///< no application has played since the start
    appsListed,        ///< there are rows: `playing` and `idle` count them
    permissionRevoked, ///< and every application was given back
    restorationFails,  ///< permission was revoked, and giving back is being retried: `failures` says why
  };

  Event event = Event::nothing;
  int playing = 0;
  int idle = 0;
  std::string failures;

  bool operator==(const MixerStatus&) const = default;
};

} // namespace sonvel
