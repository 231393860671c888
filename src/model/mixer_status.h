#pragma once

#include <string>

namespace sonvel {

/// The content of the status line; the views turn it into words.
struct MixerStatus {
  enum class Event {
    nothing,           ///< before the first reconciliation
    noAppsYet,         ///< no application has played since the start
    appsListed,        ///< there are rows: `playing` and `idle` count them
    permissionRevoked, ///< all applications were given back
    restorationFails,  ///< permission was revoked and giving back is being retried; `failures` has the errors
  };

  Event event = Event::nothing;
  int playing = 0;
  int idle = 0;
  std::string failures;

  bool operator==(const MixerStatus&) const = default;
};

} // namespace sonvel
