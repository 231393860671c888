#pragma once

#include "pipewire/graph_index.h"
#include "platform/audio_types.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace sonvel::pipewire {

/// The name of every tap's node starts with this, followed by a part unique to this run.
inline constexpr auto kTapNamePrefix = "sonvel-tap-";

/// The desired state of a tap.
struct DesiredTap {
  std::string nodeName; ///< also the tap's UID
  std::string description;
  std::set<ProcessKey> processes;  ///< whose streams it captures
  std::set<std::string> bundleIDs; ///< later processes with one of these IDs join
  std::uint64_t lastStranger = 0;  ///< processes up to this arrival do not join: see ProcessJoining
  bool isMuted = false;            ///< only a muted tap has a node; others are read from the streams
  bool standsBy = false;           ///< takes its streams without a filter that reads them: they are silent
  bool isMono = false;             ///< its device has one channel
  bool isRetired = false;          ///< destroyed in an open configuration
  bool isLeaving = false;          ///< forgotten when its node has gone
};

/// The desired state of a started IOProc. It runs in the node of its muted tap, or, if its taps are not
/// muted, in a node of its own that reads their streams; the node is linked to the device.
struct DesiredFilter {
  std::string nodeName; ///< of a node of its own
  std::string description;
  std::string deviceName;
  std::set<AudioObjectID> taps;
  bool isHeld = false;     ///< started in an open configuration: takes no streams yet
  bool isRetired = false;  ///< stopped in an open configuration: keeps running
  bool isStopping = false; ///< removed when its taps' nodes are gone
  bool isOverdue = false;  ///< must stop now, wherever its streams are
};

/// Everything that this program wants in the server.
struct DesiredState {
  std::map<AudioObjectID, DesiredTap> taps;
  std::map<IOProcID, DesiredFilter> filters;
};

/// The muted tap that a filter reads; none if its taps are not muted.
inline std::optional<AudioObjectID> mutedTapOf(const DesiredState& desired, const DesiredFilter& filter) {
  for (const auto id : filter.taps)
    if (const auto tap = desired.taps.find(id); tap != desired.taps.end() && tap->second.isMuted) return id;
  return std::nullopt;
}

/// Two ports to be linked.
struct PortPair {
  GlobalID output = 0;
  GlobalID input = 0;

  auto operator<=>(const PortPair&) const = default;
};

/// The destination of a stream: a tap's node, or the device it had before.
struct StreamRouting {
  GlobalID stream = 0;
  std::string tapName; ///< empty: the device it had before

  bool operator==(const StreamRouting&) const = default;
};

/// The edits that turn the current graph into the desired one. Each may be repeated safely.
struct Plan {
  std::vector<AudioObjectID> tapNodesToCreate;
  std::vector<AudioObjectID> tapNodesToDestroy;
  std::vector<IOProcID> filtersToCreate;
  std::vector<IOProcID> filtersToDestroy;
  std::vector<PortPair> linksToCreate;
  std::vector<PortPair> strandedLinksToCreate; ///< from stranded streams into their taps
  /// from stranded streams to their own devices; these links outlive us
  std::vector<PortPair> lastingLinksToCreate;
  std::vector<PortPair> linksToDestroy; ///< ours
  std::vector<GlobalID> linksToCut;     ///< the session manager's, which bypass a tap
  std::vector<StreamRouting> routings;

  bool operator==(const Plan&) const = default;
};

} // namespace sonvel::pipewire
