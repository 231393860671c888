#pragma once

#include <pipewire/pipewire.h>

#include <chrono>
#include <cstdio>

/// Differences between PipeWire 0.3.65 with WirePlumber 0.4.13 (Debian 12) and PipeWire 1.4.2 with
/// WirePlumber 0.5.8 (Debian 13), with reasons.
namespace sonvel::pipewire::quirks {

/// Since 1.0 the node property `node.passive` says that a node must not keep a device awake. Before, the link
/// property `link.passive` did, and the node property silenced the applications.
inline bool nodesCanBePassive() {
  int major = 0;
  return std::sscanf(pw_get_library_version(), "%d", &major) == 1 && major >= 1;
}

/// The configuration whose clients get a real-time thread. Since 1.4 the usual one; the older name gives a
/// warning. Before, only `client-rt.conf` loads the module for it.
inline const char* realTimeConfiguration() {
  int major = 0;
  int minor = 0;
  const bool isRead = std::sscanf(pw_get_library_version(), "%d.%d", &major, &minor) == 2;
  return isRead && (major > 1 || (major == 1 && minor >= 4)) ? "client.conf" : "client-rt.conf";
}

/// A WirePlumber 0.4 that starts while we are connected must set up the devices first, which it can't while
/// they run: wait this long. 0.5 would not need it.
inline constexpr std::chrono::milliseconds kManagerSettles{1000};

/// After its start WirePlumber 0.4 does not link streams that existed before; 0.5 does so within
/// milliseconds. After this time we link them ourselves.
inline constexpr std::chrono::milliseconds kManagerLinksWithin{1000};

// Differences without a function here:
//
// WirePlumber remembers a stream's device and restores it when the stream appears, 0.4 as `target.node`, 0.5
// as `target.object`, replacing what we wrote before. stream_targets.cpp reads both as the user's choice.
//
// A stereo stream on a mono device is mixed down with factor 0.707 on 0.3.65 and 0.5 on 1.4. A tap for such a
// device is mono too, so the server uses its own factor.
//
// 0.3.65 can refuse or restrict programs by name (`access.rejected`, `access.restricted`); a refused one gets
// EACCES. 1.4 ignores these lists: a program is restricted by the socket that it uses, or as sandboxes
// request (`pipewire.client.access`), and the session manager decides its permissions. rights_watch.cpp
// checks the permissions themselves, which work the same on both.

} // namespace sonvel::pipewire::quirks
