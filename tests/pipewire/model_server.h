#pragma once

#include "pipewire/graph_plan.h"

#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace sonvel::pipewire {

using Channels = std::vector<std::string>;

inline const Channels kStereoChannels{"FL", "FR"};
inline const Channels kMonoChannels{"MONO"};
inline const Channels kSurroundChannels{"FL", "FR", "FC", "LFE", "RL", "RR"};

/// A sound server and its session manager, as far as a plan could tell them from real ones. What a plan asks
/// for happens some time later, one piece after the other; global IDs are used again at once; streams are
/// linked to the targets that the metadata gives them. A plan that would be heard fails the test.
class ModelServer {
 public:
  static constexpr auto kSpeakers = "speakers";
  static constexpr auto kHeadphones = "headphones";

  /// Comes up with the session manager and the two sinks.
  ModelServer();

  GlobalID addSink(const std::string& name, const Channels& channels = kStereoChannels);
  GlobalID addStream(std::int32_t pid, const Channels& channels = kStereoChannels,
                     bool cannotBeMoved = false);
  GlobalID addForeignNode(const std::string& name);
  GlobalID addForeignLink(GlobalID outputNode, const std::string& inputNode);
  void removeNode(GlobalID node);
  void removeNode(const std::string& name);
  void removeLink(GlobalID link);

  /// Takes from us what we have in the server.
  void loseTapNode(AudioObjectID tap);
  void loseFilter(IOProcID session);

  /// What a mixer does when its user moves a stream.
  void moveStream(GlobalID stream, const std::string& target);

  void stopSessionManager();
  void startSessionManager();

  /// Everything of ours is gone, and so are the clients, as after a crash of the server.
  void restart();

  AudioObjectID wantTap(std::int32_t pid, bool isMuted = true);
  IOProcID wantSession(const std::set<AudioObjectID>& taps, const std::string& device);
  void wantStop(IOProcID session);

  void dropTap(AudioObjectID tap) { desired.taps.at(tap).isLeaving = true; }

  Plan plan() const { return planEdits(graph, desired, owned); }

  /// Does what is missing, as far as it can be asked for now. False if nothing is.
  bool reconcile();

  /// Lets the oldest thing that was asked for happen. False if there is none.
  bool advance();

  /// Both, in turn, until nothing is missing. Fails the test if that takes more than `longest` turns.
  void settle(int longest = 400);

  /// The sinks where a stream is heard; with "tap:" before the name where that is through one of ours.
  std::set<std::string> heardAt(GlobalID stream) const;

  /// Pairs of node and channel at both ends of each link from the one node to the other.
  std::set<std::string> channelsLinked(GlobalID outputNode, GlobalID inputNode) const;

  const std::string& tapName(AudioObjectID tap) const { return desired.taps.at(tap).nodeName; }

  std::vector<GlobalID> streams() const;

  Graph graph;
  OwnedObjects owned;
  DesiredState desired;

 private:
  GlobalID freeID();
  GlobalID clientOf(std::int32_t pid);
  GlobalID addNode(Node node);
  void addPorts(GlobalID node, PortDirection direction, const Channels& channels, bool areMonitors);

  void later(std::function<void()> happens) { inFlight_.push_back(std::move(happens)); }

  void apply(const Plan& plan);
  void createTapNode(AudioObjectID tap);
  void createFilter(IOProcID session);
  void createLink(const PortPair& pair);
  void destroyLink(const PortPair& pair);
  void route(const StreamRouting& routing);
  void finishStops();

  void chooseDefaultSink();
  void manage();
  void relink(GlobalID stream);
  std::optional<GlobalID> targetOf(GlobalID stream) const;

  bool isReadByOthers(AudioObjectID tap, IOProcID session) const;
  void expectNothingIsHeardOf(const Plan& plan) const;
  bool reachesASink(const std::string& tapName) const;
  bool ownLinksCarry(GlobalID outputNode, GlobalID inputNode) const;

  std::deque<std::function<void()>> inFlight_;
  std::map<GlobalID, std::uint64_t> serials_;         ///< of links, whose IDs are used again, too
  std::map<PortPair, std::uint64_t> ownLinks_;        ///< serial of the link that was last asked for
  std::map<AudioObjectID, std::string> tapNodeNames_; ///< of those that were asked for
  std::set<GlobalID> managedLinks_;
  std::uint64_t lastSerial_ = 0;
  std::uint32_t lastNumber_ = 0;
  bool isManaging_ = false; ///< the session manager has been woken
};

} // namespace sonvel::pipewire
