#pragma once

#include "pipewire/fake_objects.h"
#include "pipewire/reconciler.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace sonvel::pipewire {

using Channels = std::vector<std::string>;

inline const Channels kStereoChannels{"FL", "FR"};

/// A sound server with its session manager for a real Reconciler. Requests take effect later, one after the
/// other; global IDs are reused at once; the session manager gives our nodes their ports and links each
/// stream to its target in the metadata. Time passes only when nothing else can happen.
class FakeServer final : public GraphEdits, public GraphAlarm {
 public:
  static constexpr auto kSpeakers = "speakers"; ///< the default while connected
  static constexpr auto kHeadphones = "headphones";
  static constexpr GlobalID kSessionManager = 20;
  static constexpr GlobalID kUser = 21;

  FakeServer() {
    graph.clients[kSessionManager] = {.isKnown = true, .isSoundServer = true, .isSessionManager = true};
    graph.clients[kUser] = {.isKnown = true};
    graph.hasMetadata = true;
    addSink(kSpeakers);
    addSink(kHeadphones);
    reconciler.setEdits(this);
  }

  ~FakeServer() override { reconciler.setEdits(nullptr); }

  FakeServer(const FakeServer&) = delete;
  FakeServer& operator=(const FakeServer&) = delete;

  GlobalID addSink(const std::string& name, const Channels& channels = kStereoChannels) {
    return addNode({.kind = NodeKind::sink, .name = name}, channels, channels, true);
  }

  GlobalID addStream(std::int32_t pid, const Channels& channels = kStereoChannels) {
    const GlobalID client = 1000 + static_cast<GlobalID>(pid);
    graph.clients[client].facts.processID = pid;
    graph.clients[client].isKnown = true;
    return addNode({.client = client, .kind = NodeKind::outputStream, .name = "player", .isRunning = true},
                   {}, channels, false);
  }

  /// A link made by hand, or by another client.
  GlobalID addLinkByHand(GlobalID outputNode, GlobalID inputNode, GlobalID client = kUser) {
    const GraphIndex index(graph);
    return addLink({index.portsOf(outputNode, PortDirection::out, false).front(),
                    index.portsOf(inputNode, PortDirection::in, false).front()},
                   client);
  }

  void removeNode(GlobalID node) {
    for (const auto& [id, link] : std::map(graph.links))
      if (link.outputNode == node || link.inputNode == node) removeLink(id);
    std::erase_if(graph.ports, [node](const auto& port) { return port.second.node == node; });
    firstFree_ = kFirstID;
    lose(graph.nodes.at(node).serial);
    graph.nodes.erase(node);
    graph.metadata.erase(node);
    manage();
  }

  void removeLink(GlobalID link) {
    ++graph.revision;
    if (graph.links.erase(link) == 0) return;
    firstFree_ = kFirstID;
    lose(linkSerials_.at(link));
    manage();
  }

  std::optional<GlobalID> nodeNamed(std::string_view name) const {
    for (const auto& [id, node] : graph.nodes)
      if (node.name == name) return id;
    return std::nullopt;
  }

  GlobalID idOf(const std::string& name) const { return nodeNamed(name).value(); }

  /// Moves a stream as a mixer does, or lets it follow the default device ("-1").
  void moveStream(GlobalID stream, const std::string& target) {
    graph.metadata[stream]["target.object"] = {"Spa:String", target};
    manage();
  }

  AudioObjectID wantTap(std::int32_t pid, bool isMuted = true) {
    const auto id = static_cast<AudioObjectID>(1000 + ++lastSerial_);
    DesiredTap& tap = reconciler.desired().taps[id];
    tap.nodeName = kTapNamePrefix + std::to_string(id);
    tap.processes = {"process " + std::to_string(pid)};
    tap.isMuted = isMuted;
    return id;
  }

  IOProcID wantFilter(AudioObjectID tap, const std::string& device, bool isHeld = false) {
    const IOProcID id = ++lastSerial_;
    reconciler.setBlock(id, {});
    reconciler.desired().filters[id] = {.nodeName = "sonvel-aggregate-" + std::to_string(id),
                                        .description = "",
                                        .deviceName = device,
                                        .taps = {tap},
                                        .isHeld = isHeld};
    return id;
  }

  DesiredFilter& filter(IOProcID id) { return reconciler.desired().filters.at(id); }

  const std::string& tapName(AudioObjectID tap) { return reconciler.desired().taps.at(tap).nodeName; }

  /// Runs the reconciler and the oldest pending requests. False if there is none.
  bool advance(std::size_t requests = 1) {
    ++graph.revision;
    reconciler.reconcile();
    std::erase_if(reconciler.desired().filters, [this](const auto& filter) {
      return filter.second.isStopping && !reconciler.hasFilter(filter.first);
    });
    if (inFlight_.empty()) return false;
    for (; requests > 0 && !inFlight_.empty(); --requests) {
      const auto happens = std::move(inFlight_.front());
      inFlight_.pop_front();
      happens();
    }
    return true;
  }

  /// What happens next; only time passes if nothing else can. False if nothing is left to do.
  bool step(std::size_t requests = 1) {
    if (advance(requests) || !inFlight_.empty()) return true;
    if (!due_) return false;
    now_ = std::max(now_, *due_);
    due_.reset();
    return true;
  }

  /// Runs until nothing is left to do; false if that does not end.
  bool settle(std::size_t requestsAtOnce = 1) {
    for (int turn = 0; turn < 20'000; ++turn)
      if (!step(requestsAtOnce)) return true;
    return false;
  }

  /// The sinks where a stream is heard; with the prefix "tap:" if through one of our taps.
  std::set<std::string> heardAt(GlobalID stream) const {
    std::set<std::string> places;
    const GraphIndex index(graph);
    for (const auto& [id, node] : graph.nodes) {
      if (!index.feeds(stream, id)) continue;
      if (node.kind == NodeKind::sink) places.insert(node.name);
      if (node.name.starts_with(kTapNamePrefix)) places.merge(heardThrough(id));
    }
    return places;
  }

  std::vector<GlobalID> streams() const { return GraphIndex(graph).streams(); }

  std::size_t countOwnNodes() const {
    return static_cast<std::size_t>(std::ranges::count_if(
        graph.nodes, [](const auto& node) { return node.second.name.starts_with("sonvel"); }));
  }

  Time now() const override { return now_; }

  void lookAgainIn(std::chrono::milliseconds delay) override {
    due_ = due_ ? std::min(*due_, now_ + delay) : now_ + delay;
  }

  std::unique_ptr<OwnTapNode> makeTapNode(const DesiredTap& tap) override {
    const Channels channels = tap.isMono ? Channels{"MONO"} : kStereoChannels;
    return std::make_unique<FakeTapNode>(makeNode(tap.nodeName, channels), unmaking_, endOfIOProc_, faults);
  }

  std::unique_ptr<OwnObject> makeFilter(const DesiredFilter& filter, const IOProcBlock&) override {
    return std::make_unique<FakeObject<OwnObject>>(makeNode(filter.nodeName, kStereoChannels), unmaking_);
  }

  std::unique_ptr<OwnObject> makeLink(const PortPair& ports, LinkKind) override {
    auto piece = std::make_shared<Piece>();
    const GlobalID outputNode = graph.ports.at(ports.output).node;
    later([this, piece, ports, outputNode] {
      if (!piece->isWanted) return;
      const auto output = graph.ports.find(ports.output);
      if (output == graph.ports.end() || output->second.node != outputNode ||
          !graph.ports.contains(ports.input)) {
        piece->state = OwnObject::State::failed;
        return;
      }
      piece->serial = linkSerials_.at(addLink(ports, std::nullopt));
      made_[piece->serial] = piece;
      later([piece] {
        if (piece->state == OwnObject::State::asked) piece->state = OwnObject::State::ready;
      });
    });
    return std::make_unique<FakeObject<OwnObject>>(piece, unmaking_);
  }

  void cutLink(GlobalID link) override {
    if (graph.links.at(link).client == kUser) faults.emplace_back("a link made by hand is cut");
    removeLink(link);
  }

  void write(GlobalID stream, const MetadataWrite& write) override {
    const bool wasInTap = !targetTapOf(graph, stream).empty();
    if (write.value)
      graph.metadata[stream][write.key] = *write.value;
    else
      graph.metadata[stream].erase(write.key);
    const std::string tapName{targetTapOf(graph, stream)};
    const auto tap = nodeNamed(tapName);
    if (!wasInTap && tap && heardThrough(*tap).empty() && !standsBy(tapName))
      faults.emplace_back("a stream is sent into a tap that no one hears");
    manage();
  }

  /// A session manager that is too busy to do anything until it is not.
  void setManagerBusy(bool isBusy) {
    isManagerBusy_ = isBusy;
    manage();
  }

  Graph graph;
  std::vector<std::string> faults; ///< faults that a listener would notice
  Reconciler reconciler{graph, *this};

 private:
  static constexpr GlobalID kFirstID = 30;

  void later(std::function<void()> happens) { inFlight_.push_back(std::move(happens)); }

  GlobalID freeID() {
    while (graph.nodes.contains(firstFree_) || graph.ports.contains(firstFree_) ||
           graph.links.contains(firstFree_))
      ++firstFree_;
    return firstFree_;
  }

  GlobalID addNode(Node node, const Channels& inputs, const Channels& outputs, bool areOutputsMonitors) {
    node.serial = ++lastSerial_;
    const GlobalID id = freeID();
    graph.nodes[id] = std::move(node);
    addPorts(id, inputs, outputs, areOutputsMonitors);
    manage();
    return id;
  }

  void addPorts(GlobalID id, const Channels& inputs, const Channels& outputs, bool areOutputsMonitors) {
    std::uint32_t index = 0;
    for (const auto& channel : inputs)
      graph.ports[freeID()] = {.node = id, .channel = channel, .index = index++};
    for (const auto& channel : outputs)
      graph.ports[freeID()] = {.node = id,
                               .direction = PortDirection::out,
                               .isMonitor = areOutputsMonitors,
                               .channel = channel,
                               .index = index++};
  }

  GlobalID addLink(const PortPair& ports, std::optional<GlobalID> client) {
    const GlobalID id = freeID();
    graph.links[id] = {.client = client,
                       .outputNode = graph.ports.at(ports.output).node,
                       .outputPort = ports.output,
                       .inputNode = graph.ports.at(ports.input).node,
                       .inputPort = ports.input};
    linkSerials_[id] = ++lastSerial_;
    return id;
  }

  std::shared_ptr<Piece> makeNode(const std::string& name, const Channels& channels) {
    auto piece = std::make_shared<Piece>();
    later([this, piece, name, channels] {
      if (!piece->isWanted) return;
      const GlobalID id = addNode({.name = name}, {}, {}, false);
      piece->serial = graph.nodes.at(id).serial;
      portless_[piece->serial] = channels;
      piece->state = OwnObject::State::ready;
      made_[piece->serial] = piece;
    });
    return piece;
  }

  void lose(std::uint64_t serial) {
    if (const auto made = made_.find(serial); made != made_.end())
      made->second->state = OwnObject::State::lost;
  }

  /// Reports streams that play into this tap's node and would be heard elsewhere.
  void expectNoneIn(const Piece& tapNode, const char* what) {
    const GraphIndex index(graph);
    const auto id = index.nodeWithSerial(tapNode.serial);
    if (!id || !graph.nodes.at(*id).name.starts_with(kTapNamePrefix)) return;
    for (const auto stream : index.streams())
      if (index.feeds(stream, *id) && usersTargetOf(index, stream))
        faults.push_back(what + (" ends while stream " + std::to_string(stream)) + " plays into it");
  }

  void unmake(Piece& piece) {
    piece.isWanted = false;
    made_.erase(piece.serial);
    if (piece.serial == 0) return;
    expectNoneIn(piece, "a tap's node");
    later([this, serial = piece.serial] {
      for (const auto& [id, node] : std::map(graph.nodes))
        if (node.serial == serial) removeNode(id);
      for (const auto& [id, link] : std::map(graph.links))
        if (linkSerials_.at(id) == serial) removeLink(id);
    });
  }

  /// The session manager reacts to a change.
  void manage() {
    graph.defaultSinkName.clear();
    for (const auto* name : {kHeadphones, kSpeakers})
      if (nodeNamed(name)) graph.defaultSinkName = name;
    if (std::exchange(isManaging_, true)) return;
    later([this] {
      isManaging_ = false;
      if (isManagerBusy_) return;
      for (const auto& [id, node] : graph.nodes)
        if (const auto channels = portless_.extract(node.serial); !channels.empty())
          addPorts(id, channels.mapped(), channels.mapped(), false);
      for (const auto stream : streams())
        relink(stream);
    });
  }

  void relink(GlobalID stream) {
    auto target = nodeNamed(graph.defaultSinkName);
    if (const MetadataValue* wanted = graph.metadataOf(stream, "target.object"))
      if (const auto node = nodeNamed(wanted->value)) target = node;
    bool isLinked = false;
    std::vector<GlobalID> ours;
    for (const auto& [id, link] : graph.links)
      if (link.outputNode == stream && link.client == kSessionManager) ours.push_back(id);
    for (const auto id : ours)
      if (graph.nodes.at(stream).cannotBeMoved || graph.links.at(id).inputNode == target)
        isLinked = true;
      else
        removeLink(id);
    if (isLinked || !target) return;
    const GraphIndex index(graph);
    const auto& outputs = index.portsOf(stream, PortDirection::out, false);
    const auto& inputs = index.portsOf(*target, PortDirection::in, false);
    for (std::size_t i = 0; i < outputs.size() && !inputs.empty(); ++i)
      addLink({outputs[i], inputs[std::min(i, inputs.size() - 1)]}, kSessionManager);
  }

  bool standsBy(const std::string& tapName) {
    return std::ranges::any_of(reconciler.desired().taps, [&](const auto& tap) {
      return tap.second.nodeName == tapName && tap.second.standsBy;
    });
  }

  /// The nodes that a node reaches through our own ready links.
  std::vector<GlobalID> nodesAfter(GlobalID node) const {
    std::vector<GlobalID> found;
    for (const auto& [id, link] : graph.links)
      if (const auto made = made_.find(linkSerials_.at(id));
          link.outputNode == node && made != made_.end() && made->second->state == OwnObject::State::ready)
        found.push_back(link.inputNode);
    return found;
  }

  std::set<std::string> heardThrough(GlobalID tapNode) const {
    std::set<std::string> places;
    const auto made = made_.find(graph.nodes.at(tapNode).serial);
    if (made == made_.end() || !made->second->runsIOProc) return places;
    for (const auto sink : nodesAfter(tapNode))
      if (graph.nodes.at(sink).kind == NodeKind::sink) places.insert("tap:" + graph.nodes.at(sink).name);
    return places;
  }

  const PieceEnd unmaking_ = [this](Piece& piece) { unmake(piece); };
  const PieceEnd endOfIOProc_ = [this](Piece& piece) {
    if (piece.isWanted) expectNoneIn(piece, "the IOProc of a tap");
  };
  Time now_;
  std::optional<Time> due_;
  std::deque<std::function<void()>> inFlight_;
  std::map<std::uint64_t, std::shared_ptr<Piece>> made_; ///< by serial of the node or link
  std::map<GlobalID, std::uint64_t> linkSerials_;
  GlobalID firstFree_ = kFirstID; ///< no ID below it is free
  std::uint64_t lastSerial_ = 0;
  std::map<std::uint64_t, Channels> portless_; ///< nodes of ours without ports yet, by serial
  bool isManaging_ = false;                    ///< the session manager has work to do
  bool isManagerBusy_ = false;
};

} // namespace sonvel::pipewire
