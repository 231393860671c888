#pragma once

#include "pipewire/graph_edits.h"
#include "pipewire/graph_index.h"

#include <algorithm>
#include <unordered_map>

namespace sonvel::pipewire {

/// Whether the session manager can move a stream, as far as known. `immovable`: as in OwnedObjects.
inline bool canBeMoved(const Node& stream, const std::set<std::uint64_t>& immovable) {
  return !stream.cannotBeMoved && !immovable.contains(stream.serial);
}

/// The input of a plan, with queries that several planning steps share.
class PlanContext {
 public:
  /// The arguments' referents must outlive it.
  PlanContext(const GraphIndex& graph, const DesiredState& desired, const OwnedObjects& owned);

  const GraphIndex& graph() const noexcept { return index_; }

  const DesiredState& desired() const noexcept { return desired_; }

  const OwnedObjects& owned() const noexcept { return owned_; }

  /// The streams that a tap captures.
  std::vector<GlobalID> streamsOf(const DesiredTap& tap) const;

  /// Whether a muted tap is read by a continuing filter, or is a standby tap.
  bool isRead(AudioObjectID tap) const { return std::ranges::binary_search(readTaps_, tap); }

  /// Our tap whose node has that name; none if there is none.
  std::optional<AudioObjectID> tapNamed(std::string_view nodeName) const;

  bool canBeMoved(GlobalID stream) const {
    return pipewire::canBeMoved(index_.node(stream), owned_.immovable);
  }

  /// Whether the stream belongs into this tap.
  bool belongsIn(GlobalID stream, AudioObjectID tap) const;

  /// Whether the filter is linked with its streams and its device. `links`: of linksOf().
  bool isConnected(const DesiredFilter& filter, const std::vector<PortPair>& links) const;

  /// All links that a filter needs; fewer while a node or port is missing.
  std::vector<PortPair> linksOf(const DesiredFilter& filter) const;

  /// Pairs left with left and right with right; a mono side is paired with both.
  std::vector<PortPair> stereoPairs(const std::vector<GlobalID>& outputs,
                                    const std::vector<GlobalID>& inputs) const;

 private:
  std::optional<GlobalID> nodeOf(const DesiredFilter& filter) const;

  const GraphIndex& index_;
  const DesiredState& desired_;
  const OwnedObjects owned_;
  std::vector<AudioObjectID> readTaps_; ///< sorted
  std::unordered_map<std::string_view, AudioObjectID> tapByName_;
};

/// Sets isMono of desired taps according to their device. A tap for a mono device has one channel, so that
/// the server mixes streams down as it does for the device itself.
void suitTapsToDevices(const GraphIndex& graph, DesiredState& desired);

} // namespace sonvel::pipewire
