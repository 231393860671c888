#pragma once

#include "pipewire/reconciler.h"

#include <deque>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace sonvel::pipewire {

using Channels = std::vector<std::string>;

inline const Channels kStereoChannels{"FL", "FR"};

/// A sound server and its session manager for a real Reconciler. What is asked for happens some time later,
/// one piece after the other; global IDs are used again at once; the session manager links each stream to the
/// target that the metadata gives it. Time passes only when nothing else can happen.
class FakeServer final : public GraphEdits, public GraphAlarm {
 public:
  static constexpr auto kSpeakers = "speakers"; ///< the default while it is there
  static constexpr auto kHeadphones = "headphones";

  FakeServer();
  ~FakeServer() override;
  FakeServer(const FakeServer&) = delete;
  FakeServer& operator=(const FakeServer&) = delete;

  GlobalID addSink(const std::string& name, const Channels& channels = kStereoChannels);
  GlobalID addStream(std::int32_t pid, bool cannotBeMoved = false);
  GlobalID addForeignNode(const std::string& name);

  /// A link that a user makes by hand.
  GlobalID addLinkByHand(GlobalID outputNode, GlobalID inputNode);

  void removeNode(GlobalID node);
  void removeLink(GlobalID link);

  GlobalID idOf(const std::string& name) const { return graph.nodeNamed(name).value(); }

  /// What a mixer does when its user moves a stream, or has it follow the default device ("-1").
  void moveStream(GlobalID stream, const std::string& target);

  void stopSessionManager();

  /// `linksOldStreams`: whether it links streams that were there before it, unlike WirePlumber 0.4.
  void startSessionManager(bool linksOldStreams = true);

  AudioObjectID wantTap(std::int32_t pid, bool isMuted = true);
  IOProcID wantSession(AudioObjectID tap, const std::string& device, bool isHeld = false);

  DesiredSession& session(IOProcID id) { return reconciler.desired().sessions.at(id); }

  const std::string& tapName(AudioObjectID tap) { return reconciler.desired().taps.at(tap).nodeName; }

  /// Lets the reconciler look and the oldest thing that was asked for happen. False if there is none.
  bool advance();

  /// Lets everything happen and time pass until nothing is left to do; false if that does not end.
  bool settle();

  /// The sinks where a stream is heard; with "tap:" before the name where that is through one of ours.
  std::set<std::string> heardAt(GlobalID stream) const;

  /// Pairs of the channels at both ends of each link from the one node to the other.
  std::set<std::string> channelsLinked(GlobalID outputNode, GlobalID inputNode) const;

  std::vector<GlobalID> streams() const;

  std::size_t countOwnNodes() const;

  Time now() const override { return now_; }

  void lookAgainIn(std::chrono::milliseconds delay) override;
  std::unique_ptr<OwnObject> makeTapNode(const DesiredTap& tap) override;
  std::unique_ptr<OwnObject> makeFilter(const DesiredSession& session, const IOProcBlock& block) override;
  std::unique_ptr<OwnObject> makeLink(const PortPair& ports, LinkKind kind) override;
  void cutLink(GlobalID link) override;
  void write(GlobalID stream, const MetadataWrite& write) override;

  Graph graph;
  int writes = 0;                  ///< of metadata by the reconciler
  std::vector<std::string> faults; ///< what someone who listens would have noticed
  Reconciler reconciler{graph, *this};

 private:
  class Made;

  void later(std::function<void()> happens) { inFlight_.push_back(std::move(happens)); }

  GlobalID freeID() const;
  GlobalID addNode(Node node, const Channels& inputs, const Channels& outputs, bool areOutputsMonitors);
  GlobalID addLink(const PortPair& ports, std::optional<GlobalID> client);
  std::unique_ptr<OwnObject> makeNode(const std::string& name, const Channels& channels, bool isTap);
  void lost(std::uint64_t serial);
  void unmake(Made& made);
  void manage();
  void relink(GlobalID stream);
  std::optional<GlobalID> targetOf(GlobalID stream) const;
  bool isReadyLink(GlobalID outputNode, GlobalID inputNode) const;
  bool reachesASink(GlobalID tapNode) const;

  Time now_;
  std::optional<Time> due_;
  std::deque<std::function<void()>> inFlight_;
  std::map<std::uint64_t, Made*> made_; ///< by the serial of node or link
  std::map<GlobalID, std::uint64_t> linkSerials_;
  std::set<std::uint64_t> unmanaged_; ///< streams that the session manager leaves alone
  std::uint64_t lastSerial_ = 0;
  bool isManaging_ = false; ///< the session manager has been woken
};

} // namespace sonvel::pipewire
