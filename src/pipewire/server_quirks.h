#pragma once

#include <pipewire/pipewire.h>

#include <chrono>
#include <cstdio>

/// What differs between the PipeWire and WirePlumber of Debian 12 (0.3.65 and 0.4.13) and those of Debian 13
/// (1.4.2 and 0.5.8), each with its reason.
namespace sonvel::pipewire::quirks {

/// Since 1.0 a node says itself that it must not keep a device awake (`node.passive`). Before that its links
/// did (`link.passive`), and the property on a node made the applications silent.
inline bool nodesCanBePassive() {
  int major = 0;
  return std::sscanf(pw_get_library_version(), "%d", &major) == 1 && major >= 1;
}

/// The configuration whose clients get a real-time thread. From 1.4 on it is the usual one, and the older
/// name is warned of; before that only `client-rt.conf` loads the module for it.
inline const char* realTimeConfiguration() {
  int major = 0;
  int minor = 0;
  const bool isRead = std::sscanf(pw_get_library_version(), "%d.%d", &major, &minor) == 2;
  return isRead && (major > 1 || (major == 1 && minor >= 4)) ? "client.conf" : "client-rt.conf";
}

/// WirePlumber 0.4 that starts while we are there has to set up the devices first, which it can't while they
/// run: they get this time. 0.5 would not need it.
inline constexpr std::chrono::milliseconds kManagerSettles{1000};

/// WirePlumber 0.4 does not link streams again that were there before it was started; 0.5 does so within
/// milliseconds. After this time we link them ourselves.
inline constexpr std::chrono::milliseconds kManagerLinksWithin{1000};

// Not a question to ask, but to know: WirePlumber remembers a stream's device and gives it back when the
// stream appears, 0.4 as `target.node`, 0.5 as `target.object`, over what we wrote there before.
// stream_targets.cpp reads both as the user's choice.
//
// A stereo stream on a device with one channel is mixed down by 0.707 on 0.3.65 and by 0.5 on 1.4. A tap
// for such a device has one channel too, so the server does it by its own rule.
//
// 0.3.65 can refuse or restrict programs by lists of their names (`access.rejected`, `access.restricted`); a
// refused one gets EACCES. 1.4 ignores these lists: there a program is restricted by the socket that it comes
// in by, or as sandboxes ask for it (`pipewire.client.access`), and the session manager decides what it may
// do. rights_watch.cpp looks at the permissions themselves, which are the same on both.

} // namespace sonvel::pipewire::quirks
