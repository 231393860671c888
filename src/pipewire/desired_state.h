#pragma once

#include "pipewire/graph_index.h"
#include "platform/audio_types.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace sonvel::pipewire {

/// Every node that stands for a tap has a name that begins so, followed by what no other run shares.
inline constexpr auto kTapNamePrefix = "sonvel-tap-";

/// A tap as it should be.
struct DesiredTap {
  std::string nodeName; ///< also its UID
  std::string description;
  std::set<ProcessKey> processes;
  std::set<std::string> bundleIDs;      ///< processes that appear later under one of these join
  std::set<ProcessKey> formerStrangers; ///< processes that were there before it and were not listed
  bool isMuted = false;                 ///< only a muted tap has a node: others are read from the streams
  bool standsBy = false;                ///< it takes its streams though no session reads it: they are silent
  bool isMono = false;                  ///< its device has one channel
  bool isRetired = false;               ///< destroyed in a configuration that is still open
  bool isLeaving = false;               ///< it is forgotten as soon as its node has gone
};

/// A started IOProc as it should be: filter between taps and a device.
struct DesiredSession {
  std::string filterName;
  std::string description;
  std::string deviceName;
  std::set<AudioObjectID> taps;
  bool isHeld = false;     ///< started in a configuration that is still open: it takes no streams yet
  bool isRetired = false;  ///< stopped in a configuration that is still open: it goes on
  bool isStopping = false; ///< its filter goes as soon as the nodes of its taps have gone
  bool isOverdue = false;  ///< it stops now, wherever the streams are
};

/// Everything that this program wants of the sound server.
struct DesiredState {
  std::map<AudioObjectID, DesiredTap> taps;
  std::map<IOProcID, DesiredSession> sessions;
};

/// Two ports to be joined.
struct PortPair {
  GlobalID output = 0;
  GlobalID input = 0;

  auto operator<=>(const PortPair&) const = default;
};

/// Where a stream belongs: into the node of a tap, or where its user had it.
struct StreamRouting {
  GlobalID stream = 0;
  std::string tapName; ///< empty: where its user had it

  bool operator==(const StreamRouting&) const = default;
};

/// What this program has in the server already.
struct OwnedObjects {
  std::map<AudioObjectID, bool> tapNodes; ///< with whether the node has one channel
  std::set<IOProcID> filters;
  std::map<PortPair, bool> links;    ///< with whether the server has negotiated them
  std::set<std::uint64_t> stranded;  ///< serials of streams that the session manager no longer links
  std::set<std::uint64_t> immovable; ///< serials of streams that were sent into a tap and did not come
};

/// The edits that are missing between what is and what should be. Each is safe to do twice.
struct Plan {
  std::vector<AudioObjectID> tapNodesToCreate;
  std::vector<AudioObjectID> tapNodesToDestroy;
  std::vector<IOProcID> filtersToCreate;
  std::vector<IOProcID> filtersToDestroy;
  std::vector<PortPair> linksToCreate;
  std::vector<PortPair> strandedLinksToCreate; ///< of stranded streams into their taps
  std::vector<PortPair> lastingLinksToCreate;  ///< of stranded streams to their own devices: they outlive us
  std::vector<PortPair> linksToDestroy;        ///< of ours
  std::vector<GlobalID> linksToCut; ///< of the session manager, which play a tapped stream past its tap
  std::vector<StreamRouting> routings;

  bool operator==(const Plan&) const = default;
};

} // namespace sonvel::pipewire
