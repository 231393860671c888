#pragma once

#include "pipewire/desired_state.h"
#include "pipewire/graph_index.h"

namespace sonvel::pipewire {

/// What a plan looks at, with the questions that several of its parts ask.
class PlanContext {
 public:
  PlanContext(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned);

  const GraphIndex& graph() const noexcept { return index_; }

  const DesiredState& desired() const noexcept { return desired_; }

  const OwnedObjects& owned() const noexcept { return owned_; }

  /// The streams that a tap is on.
  std::vector<GlobalID> streamsOf(const DesiredTap& tap) const;

  /// Whether a muted tap is read by a session that is to go on, or stands by.
  bool isRead(AudioObjectID tap) const { return readTaps_.contains(tap); }

  /// The tap of ours with that name of its node; none if there is no such tap.
  std::optional<AudioObjectID> tapNamed(const std::string& nodeName) const;

  /// Whether the session manager can move a stream, as far as we know.
  bool canBeMoved(GlobalID stream) const;

  /// Whether a stream that has this tap as its target is right there.
  bool belongsIn(GlobalID stream, AudioObjectID tap) const;

  /// Whether the session's filter hears its taps and reaches its device.
  bool isConnected(const DesiredSession& session) const;

  /// All links that a session needs; fewer while something it needs is not there.
  std::vector<PortPair> linksOf(const DesiredSession& session) const;

  /// Joins left to left and right to right; a channel that the other side does not have goes to, or comes
  /// from, both.
  std::vector<PortPair> stereoPairs(const std::vector<GlobalID>& outputs,
                                    const std::vector<GlobalID>& inputs) const;

 private:
  std::vector<PortPair> tapLinks(const DesiredTap& tap, const std::vector<GlobalID>& inputs) const;
  bool hearsTap(const std::vector<PortPair>& links, AudioObjectID tap) const;

  const GraphIndex index_;
  const DesiredState& desired_;
  const OwnedObjects& owned_;
  std::set<AudioObjectID> readTaps_;
  std::map<std::string, AudioObjectID> tapByName_;
};

/// Notes in the desired taps whether their device has one channel. They are made for that then, so that the
/// server mixes each stream down as it does for the device itself.
void suitTapsToDevices(const Graph& graph, DesiredState& desired);

} // namespace sonvel::pipewire
