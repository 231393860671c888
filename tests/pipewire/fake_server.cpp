#include "pipewire/fake_server.h"

#include <algorithm>

namespace sonvel::pipewire {

namespace {

constexpr GlobalID kSessionManager = 20;
constexpr GlobalID kUser = 21;

} // namespace

/// A node or link that the reconciler made. Destroyed with it, it goes from the graph some time later.
class FakeServer::Made final : public OwnObject {
 public:
  explicit Made(FakeServer& server)
      : server_(server) {}

  ~Made() override { server_.unmake(*this); }

  State state() const override { return current; }

  std::uint32_t cycles() const override { return ++cycles_; }

  State current = State::asked;
  std::uint64_t serial = 0;
  bool outlivesUs = false;
  std::shared_ptr<bool> isWanted = std::make_shared<bool>(true);

 private:
  FakeServer& server_;
  mutable std::uint32_t cycles_ = 0;
};

FakeServer::FakeServer() {
  graph.clients[kSessionManager] = {.isKnown = true, .isSoundServer = true, .isSessionManager = true};
  graph.clients[kUser] = {.isKnown = true};
  startSessionManager();
  addSink(kSpeakers);
  addSink(kHeadphones);
  reconciler.setEdits(this);
}

FakeServer::~FakeServer() {
  reconciler.setEdits(nullptr);
}

GlobalID FakeServer::freeID() const {
  GlobalID id = 30;
  while (graph.clients.contains(id) || graph.nodes.contains(id) || graph.ports.contains(id) ||
         graph.links.contains(id))
    ++id;
  return id;
}

GlobalID FakeServer::addNode(Node node, const Channels& inputs, const Channels& outputs,
                             bool areOutputsMonitors) {
  node.serial = ++lastSerial_;
  const GlobalID id = freeID();
  graph.nodes[id] = std::move(node);
  std::uint32_t index = 0;
  for (const auto& channel : inputs)
    graph.ports[freeID()] = {
        .node = id, .direction = PortDirection::in, .channel = channel, .index = index++};
  for (const auto& channel : outputs)
    graph.ports[freeID()] = {.node = id,
                             .direction = PortDirection::out,
                             .isMonitor = areOutputsMonitors,
                             .channel = channel,
                             .index = index++};
  manage();
  return id;
}

GlobalID FakeServer::addSink(const std::string& name, const Channels& channels) {
  Node node;
  node.kind = NodeKind::sink;
  node.name = name;
  return addNode(node, channels, channels, true);
}

GlobalID FakeServer::addStream(std::int32_t pid, bool cannotBeMoved) {
  const auto isOfProcess = [pid](const auto& client) { return client.second.facts.processID == pid; };
  const auto client = std::ranges::find_if(graph.clients, isOfProcess);
  const GlobalID clientID = client == graph.clients.end() ? freeID() : client->first;
  graph.clients[clientID].facts.processID = pid;
  graph.clients[clientID].isKnown = true;
  Node node;
  node.kind = NodeKind::outputStream;
  node.client = clientID;
  node.name = "player";
  node.isRunning = true;
  node.cannotBeMoved = cannotBeMoved;
  return addNode(node, {}, kStereoChannels, false);
}

GlobalID FakeServer::addForeignNode(const std::string& name) {
  Node node;
  node.name = name;
  return addNode(node, kStereoChannels, {}, false);
}

GlobalID FakeServer::addLink(const PortPair& ports, std::optional<GlobalID> client) {
  const GlobalID id = freeID();
  graph.links[id] = {.client = client,
                     .outputNode = graph.ports.at(ports.output).node,
                     .outputPort = ports.output,
                     .inputNode = graph.ports.at(ports.input).node,
                     .inputPort = ports.input};
  linkSerials_[id] = ++lastSerial_;
  return id;
}

GlobalID FakeServer::addLinkByHand(GlobalID outputNode, GlobalID inputNode) {
  return addLink({graph.portsOf(outputNode, PortDirection::out, false).front(),
                  graph.portsOf(inputNode, PortDirection::in, false).front()},
                 kUser);
}

void FakeServer::lost(std::uint64_t serial) {
  if (const auto made = made_.find(serial); made != made_.end())
    made->second->current = OwnObject::State::lost;
}

void FakeServer::removeNode(GlobalID node) {
  const auto links = graph.links;
  for (const auto& [id, link] : links)
    if (link.outputNode == node || link.inputNode == node) removeLink(id);
  std::erase_if(graph.ports, [node](const auto& port) { return port.second.node == node; });
  lost(graph.nodes.at(node).serial);
  graph.nodes.erase(node);
  graph.metadata.erase(node);
  manage();
}

void FakeServer::removeLink(GlobalID link) {
  if (graph.links.erase(link) == 0) return;
  lost(linkSerials_.at(link));
  manage();
}

void FakeServer::moveStream(GlobalID stream, const std::string& target) {
  graph.metadata[stream]["target.object"] = {"Spa:String", target};
  manage();
}

void FakeServer::stopSessionManager() {
  graph.hasMetadata = false;
  graph.metadata.clear();
  graph.defaultSinkName.clear();
  const auto links = graph.links;
  for (const auto& [id, link] : links)
    if (link.client == kSessionManager) removeLink(id);
}

void FakeServer::startSessionManager(bool linksOldStreams) {
  graph.hasMetadata = true;
  unmanaged_.clear();
  if (!linksOldStreams)
    for (const auto stream : streams())
      unmanaged_.insert(graph.nodes.at(stream).serial);
  manage();
}

AudioObjectID FakeServer::wantTap(std::int32_t pid, bool isMuted) {
  const auto id = static_cast<AudioObjectID>(1000 + ++lastSerial_);
  DesiredTap& tap = reconciler.desired().taps[id];
  tap.nodeName = kTapNamePrefix + std::to_string(id);
  tap.processes = {"process " + std::to_string(pid)};
  tap.isMuted = isMuted;
  return id;
}

IOProcID FakeServer::wantSession(AudioObjectID tap, const std::string& device, bool isHeld) {
  const IOProcID id = ++lastSerial_;
  reconciler.setBlock(id, {});
  reconciler.desired().sessions[id] = {.filterName = "sonvel-aggregate-" + std::to_string(id),
                                       .description = "",
                                       .deviceName = device,
                                       .taps = {tap},
                                       .isHeld = isHeld};
  return id;
}

bool FakeServer::advance() {
  reconciler.reconcile();
  std::erase_if(reconciler.desired().sessions, [this](const auto& session) {
    return session.second.isStopping && !reconciler.hasFilter(session.first);
  });
  if (inFlight_.empty()) return false;
  const auto happens = std::move(inFlight_.front());
  inFlight_.pop_front();
  happens();
  return true;
}

bool FakeServer::settle() {
  constexpr int kLongest = 20'000;
  for (int turn = 0; turn < kLongest; ++turn) {
    if (advance() || !inFlight_.empty()) continue;
    if (!due_) return true;
    now_ = std::max(now_, *due_);
    due_.reset();
  }
  return false;
}

void FakeServer::lookAgainIn(std::chrono::milliseconds delay) {
  const Time due = now_ + delay;
  due_ = due_ ? std::min(*due_, due) : due;
}

std::unique_ptr<OwnObject> FakeServer::makeNode(const std::string& name, const Channels& channels,
                                                bool isTap) {
  auto made = std::make_unique<Made>(*this);
  later([this, made = made.get(), isWanted = made->isWanted, name, channels, isTap] {
    if (!*isWanted) return;
    Node node;
    node.name = name;
    const GlobalID id = addNode(node, channels, channels, isTap);
    made->serial = graph.nodes.at(id).serial;
    made->current = OwnObject::State::ready;
    made_[made->serial] = made;
  });
  return made;
}

std::unique_ptr<OwnObject> FakeServer::makeTapNode(const DesiredTap& tap) {
  return makeNode(tap.nodeName, tap.isMono ? Channels{"MONO"} : kStereoChannels, true);
}

std::unique_ptr<OwnObject> FakeServer::makeFilter(const DesiredSession& session,
                                                  const IOProcBlock& /*block*/) {
  return makeNode(session.filterName, kStereoChannels, false);
}

std::unique_ptr<OwnObject> FakeServer::makeLink(const PortPair& ports, LinkKind kind) {
  auto made = std::make_unique<Made>(*this);
  made->outlivesUs = kind == LinkKind::lasting;
  const GlobalID outputNode = graph.ports.at(ports.output).node;
  later([this, made = made.get(), isWanted = made->isWanted, ports, outputNode] {
    if (!*isWanted) return;
    const auto output = graph.ports.find(ports.output);
    if (output == graph.ports.end() || output->second.node != outputNode ||
        !graph.ports.contains(ports.input)) {
      made->current = OwnObject::State::failed;
      return;
    }
    made->serial = linkSerials_.at(addLink(ports, std::nullopt));
    made_[made->serial] = made;
    later([made, isWanted] {
      if (*isWanted && made->current == OwnObject::State::asked) made->current = OwnObject::State::ready;
    });
  });
  return made;
}

void FakeServer::unmake(Made& made) {
  *made.isWanted = false;
  made_.erase(made.serial);
  if (made.outlivesUs || made.serial == 0) return;
  for (const auto stream : streams())
    for (const auto& [id, node] : graph.nodes)
      if (node.serial == made.serial && node.name.starts_with(kTapNamePrefix) && graph.hasMetadata &&
          graph.feeds(stream, id) && usersTargetOf(graph, stream))
        faults.push_back("a tap's node goes while stream " + std::to_string(stream) + " plays into it");
  later([this, serial = made.serial] {
    const auto nodes = graph.nodes;
    for (const auto& [id, node] : nodes)
      if (node.serial == serial) removeNode(id);
    const auto links = graph.links;
    for (const auto& [id, link] : links)
      if (linkSerials_.at(id) == serial) removeLink(id);
  });
}

void FakeServer::cutLink(GlobalID link) {
  if (graph.links.at(link).client == kUser) faults.emplace_back("a link made by hand is cut");
  removeLink(link);
}

void FakeServer::write(GlobalID stream, const MetadataWrite& write) {
  ++writes;
  const bool wasInTap = !targetTapOf(graph, stream).empty();
  if (write.value)
    graph.metadata[stream][write.key] = *write.value;
  else
    graph.metadata[stream].erase(write.key);
  const auto tap = graph.nodeNamed(targetTapOf(graph, stream));
  if (!wasInTap && tap && !reachesASink(*tap))
    faults.emplace_back("a stream is sent into a tap that no one hears");
  manage();
}

void FakeServer::manage() {
  graph.defaultSinkName.clear();
  if (graph.hasMetadata)
    for (const auto* name : {kHeadphones, kSpeakers})
      if (graph.nodeNamed(name)) graph.defaultSinkName = name;
  if (isManaging_) return;
  isManaging_ = true;
  later([this] {
    isManaging_ = false;
    if (!graph.hasMetadata) return;
    for (const auto stream : streams())
      if (!unmanaged_.contains(graph.nodes.at(stream).serial)) relink(stream);
  });
}

std::optional<GlobalID> FakeServer::targetOf(GlobalID stream) const {
  if (const MetadataValue* target = graph.metadataOf(stream, "target.object"))
    if (const auto node = graph.nodeNamed(target->value)) return node;
  return graph.nodeNamed(graph.defaultSinkName);
}

void FakeServer::relink(GlobalID stream) {
  const auto target = targetOf(stream);
  const auto links = graph.links;
  bool isLinked = false;
  for (const auto& [id, link] : links) {
    if (link.outputNode != stream || link.client != kSessionManager) continue;
    if (graph.nodes.at(stream).cannotBeMoved || link.inputNode == target)
      isLinked = true;
    else
      removeLink(id);
  }
  if (isLinked || !target) return;
  const auto outputs = graph.portsOf(stream, PortDirection::out, false);
  const auto inputs = graph.portsOf(*target, PortDirection::in, false);
  for (std::size_t i = 0; i < outputs.size() && !inputs.empty(); ++i)
    addLink({outputs[i], inputs[std::min(i, inputs.size() - 1)]}, kSessionManager);
}

std::vector<GlobalID> FakeServer::streams() const {
  std::vector<GlobalID> found;
  for (const auto& [id, node] : graph.nodes)
    if (node.kind == NodeKind::outputStream) found.push_back(id);
  return found;
}

std::size_t FakeServer::countOwnNodes() const {
  return static_cast<std::size_t>(std::ranges::count_if(
      graph.nodes, [](const auto& node) { return node.second.name.starts_with("sonvel"); }));
}

bool FakeServer::isReadyLink(GlobalID outputNode, GlobalID inputNode) const {
  return std::ranges::any_of(graph.links, [&](const auto& entry) {
    const auto made = made_.find(linkSerials_.at(entry.first));
    return entry.second.outputNode == outputNode && entry.second.inputNode == inputNode &&
           made != made_.end() && made->second->current == OwnObject::State::ready;
  });
}

bool FakeServer::reachesASink(GlobalID tapNode) const {
  return std::ranges::any_of(graph.nodes, [&](const auto& filter) {
    return isReadyLink(tapNode, filter.first) && std::ranges::any_of(graph.nodes, [&](const auto& sink) {
             return sink.second.kind == NodeKind::sink && isReadyLink(filter.first, sink.first);
           });
  });
}

std::set<std::string> FakeServer::heardAt(GlobalID stream) const {
  std::set<std::string> places;
  for (const auto& [id, node] : graph.nodes) {
    if (node.kind == NodeKind::sink && graph.feeds(stream, id)) places.insert(node.name);
    if (!node.name.starts_with(kTapNamePrefix) || !graph.feeds(stream, id)) continue;
    for (const auto& [filterID, filter] : graph.nodes)
      for (const auto& [sinkID, sink] : graph.nodes)
        if (sink.kind == NodeKind::sink && isReadyLink(id, filterID) && isReadyLink(filterID, sinkID))
          places.insert("tap:" + sink.name);
  }
  return places;
}

std::set<std::string> FakeServer::channelsLinked(GlobalID outputNode, GlobalID inputNode) const {
  std::set<std::string> channels;
  for (const auto& [id, link] : graph.links)
    if (link.outputNode == outputNode && link.inputNode == inputNode)
      channels.insert(graph.ports.at(link.outputPort).channel + ">" + graph.ports.at(link.inputPort).channel);
  return channels;
}

} // namespace sonvel::pipewire
