#include "pipewire/model_server.h"

#include "pipewire/stream_targets.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace sonvel::pipewire {

namespace {

constexpr auto kTarget = "target.object";

bool isTap(const Node& node) {
  return node.name.starts_with(kTapNamePrefix);
}

} // namespace

ModelServer::ModelServer() {
  startSessionManager();
  addSink(kSpeakers);
  addSink(kHeadphones);
}

GlobalID ModelServer::freeID() {
  GlobalID id = 30;
  const auto isTaken = [this](GlobalID candidate) {
    return graph.clients.contains(candidate) || graph.nodes.contains(candidate) ||
           graph.ports.contains(candidate) || graph.links.contains(candidate);
  };
  while (isTaken(id))
    ++id;
  return id;
}

GlobalID ModelServer::clientOf(std::int32_t pid) {
  for (const auto& [id, client] : graph.clients)
    if (client.facts.processID == pid) return id;
  Client client;
  client.facts.processID = pid;
  client.isKnown = true;
  const GlobalID id = freeID();
  graph.clients[id] = client;
  return id;
}

GlobalID ModelServer::addNode(Node node) {
  node.serial = ++lastSerial_;
  const GlobalID id = freeID();
  graph.nodes[id] = std::move(node);
  manage();
  return id;
}

void ModelServer::addPorts(GlobalID node, PortDirection direction, const Channels& channels,
                           bool areMonitors) {
  std::uint32_t index = 0;
  for (const auto& channel : channels)
    graph.ports[freeID()] = {
        .node = node, .direction = direction, .isMonitor = areMonitors, .channel = channel, .index = index++};
  manage();
}

GlobalID ModelServer::addSink(const std::string& name, const Channels& channels) {
  Node node;
  node.kind = NodeKind::sink;
  node.name = name;
  const GlobalID id = addNode(node);
  addPorts(id, PortDirection::in, channels, false);
  addPorts(id, PortDirection::out, channels, true);
  return id;
}

GlobalID ModelServer::addStream(std::int32_t pid, const Channels& channels, bool cannotBeMoved) {
  Node node;
  node.kind = NodeKind::outputStream;
  node.client = clientOf(pid);
  node.name = "player";
  node.isRunning = true;
  node.cannotBeMoved = cannotBeMoved;
  const GlobalID id = addNode(node);
  addPorts(id, PortDirection::out, channels, false);
  return id;
}

GlobalID ModelServer::addForeignNode(const std::string& name) {
  Node node;
  node.name = name;
  const GlobalID id = addNode(node);
  addPorts(id, PortDirection::in, kStereoChannels, false);
  return id;
}

GlobalID ModelServer::addForeignLink(GlobalID outputNode, const std::string& inputNode) {
  const GlobalID input = graph.nodeNamed(inputNode).value();
  const GlobalID id = freeID();
  graph.links[id] = {.outputNode = outputNode,
                     .outputPort = graph.portsOf(outputNode, PortDirection::out, false).front(),
                     .inputNode = input,
                     .inputPort = graph.portsOf(input, PortDirection::in, false).front()};
  serials_[id] = ++lastSerial_;
  return id;
}

void ModelServer::removeNode(GlobalID node) {
  const auto links = graph.links;
  for (const auto& [id, link] : links)
    if (link.outputNode == node || link.inputNode == node) removeLink(id);
  std::erase_if(graph.ports, [node](const auto& port) { return port.second.node == node; });
  graph.nodes.erase(node);
  graph.metadata.erase(node);
  manage();
}

void ModelServer::removeNode(const std::string& name) {
  if (const auto node = graph.nodeNamed(name)) removeNode(*node);
}

void ModelServer::removeLink(GlobalID id) {
  const auto link = graph.links.find(id);
  if (link == graph.links.end()) return;
  const PortPair pair{link->second.outputPort, link->second.inputPort};
  if (const auto own = ownLinks_.find(pair); own != ownLinks_.end() && own->second == serials_[id]) {
    owned.links.erase(pair); // its proxy says that it is lost
    ownLinks_.erase(own);
  }
  graph.links.erase(link);
  managedLinks_.erase(id);
  manage();
}

void ModelServer::moveStream(GlobalID stream, const std::string& target) {
  graph.metadata[stream][kTarget] = {"Spa:String", target};
  manage();
}

void ModelServer::stopSessionManager() {
  graph.hasMetadata = false;
  graph.metadata.clear();
  graph.defaultSinkName.clear();
  owned.captured.clear();
}

void ModelServer::startSessionManager() {
  graph.hasMetadata = true;
  manage();
}

void ModelServer::restart() {
  graph = {};
  owned = {};
  inFlight_.clear();
  ownLinks_.clear();
  managedLinks_.clear();
  isManaging_ = false;
  startSessionManager();
}

AudioObjectID ModelServer::wantTap(std::int32_t pid, bool isMuted) {
  const AudioObjectID id = 1000 + ++lastNumber_;
  desired.taps[id] = {.nodeName = kTapNamePrefix + std::to_string(lastNumber_),
                      .description = "",
                      .processes = {"process " + std::to_string(pid)},
                      .isMuted = isMuted,
                      .hasNode = isMuted};
  return id;
}

IOProcID ModelServer::wantSession(const std::set<AudioObjectID>& taps, const std::string& device) {
  const IOProcID id = ++lastNumber_;
  for (const auto tap : taps)
    desired.taps.at(tap).hasNode = desired.taps.at(tap).isMuted;
  desired.sessions[id] = {.filterName = "sonvel-aggregate-" + std::to_string(id),
                          .description = "",
                          .deviceName = device,
                          .taps = taps};
  return id;
}

void ModelServer::wantStop(IOProcID session) {
  DesiredSession& stopping = desired.sessions.at(session);
  stopping.isStopping = true;
  for (const auto tap : stopping.taps) {
    const bool isStillRead = std::ranges::any_of(desired.sessions, [&](const auto& other) {
      return !other.second.isStopping && other.second.taps.contains(tap);
    });
    if (desired.taps.contains(tap) && !isStillRead) desired.taps.at(tap).hasNode = false;
  }
}

std::vector<GlobalID> ModelServer::streams() const {
  std::vector<GlobalID> found;
  for (const auto& [id, node] : graph.nodes)
    if (node.kind == NodeKind::outputStream) found.push_back(id);
  return found;
}

bool ModelServer::advance() {
  if (inFlight_.empty()) return false;
  const auto happens = std::move(inFlight_.front());
  inFlight_.pop_front();
  happens();
  return true;
}

void ModelServer::settle(int longest) {
  for (int turn = 0; turn < longest; ++turn) {
    const bool wasMissing = reconcile();
    const bool hasHappened = advance();
    if (!wasMissing && !hasHappened) return;
  }
  FAIL() << "something is missing or on its way after " << longest << " turns";
}

void ModelServer::finishStops() {
  std::erase_if(desired.sessions, [this](const auto& session) {
    return session.second.isStopping && !owned.filters.contains(session.first);
  });
}

// What the session manager does.

void ModelServer::chooseDefaultSink() {
  graph.defaultSinkName.clear();
  if (!graph.hasMetadata) return;
  for (const auto* name : {kHeadphones, kSpeakers})
    if (graph.nodeNamed(name)) graph.defaultSinkName = name;
}

void ModelServer::manage() {
  chooseDefaultSink();
  if (isManaging_) return;
  isManaging_ = true;
  later([this] {
    isManaging_ = false;
    if (!graph.hasMetadata) return;
    for (const auto stream : streams())
      relink(stream);
  });
}

std::optional<GlobalID> ModelServer::targetOf(GlobalID stream) const {
  if (const MetadataValue* target = graph.metadataOf(stream, kTarget))
    if (const auto node = graph.nodeNamed(target->value)) return node;
  for (const auto* name : {kSpeakers, kHeadphones})
    if (const auto node = graph.nodeNamed(name)) return node;
  return std::nullopt;
}

void ModelServer::relink(GlobalID stream) {
  const bool isLinked = std::ranges::any_of(
      managedLinks_, [&](GlobalID link) { return graph.links.at(link).outputNode == stream; });
  if (graph.nodes.at(stream).cannotBeMoved && isLinked) return;
  const auto target = targetOf(stream);
  const auto links = managedLinks_;
  for (const auto link : links)
    if (graph.links.at(link).outputNode == stream && graph.links.at(link).inputNode != target)
      removeLink(link);
  if (!target || graph.feeds(stream, *target)) return;
  const auto outputs = graph.portsOf(stream, PortDirection::out, false);
  const auto inputs = graph.portsOf(*target, PortDirection::in, false);
  for (std::size_t i = 0; i < outputs.size() && !inputs.empty(); ++i) {
    const GlobalID id = freeID();
    graph.links[id] = {.outputNode = stream,
                       .outputPort = outputs[i],
                       .inputNode = *target,
                       .inputPort = inputs[std::min(i, inputs.size() - 1)]};
    serials_[id] = ++lastSerial_;
    managedLinks_.insert(id);
  }
}

// What can be heard.

std::set<std::string> ModelServer::heardAt(GlobalID stream) const {
  std::set<std::string> places;
  for (const auto& [id, node] : graph.nodes) {
    if (node.kind == NodeKind::sink && graph.feeds(stream, id)) places.insert(node.name);
    if (!isTap(node) || !graph.feeds(stream, id)) continue;
    for (const auto& [filterID, filter] : graph.nodes)
      for (const auto& [sinkID, sink] : graph.nodes)
        if (sink.kind == NodeKind::sink && ownLinksCarry(id, filterID) && ownLinksCarry(filterID, sinkID))
          places.insert("tap:" + sink.name);
  }
  return places;
}

std::set<std::string> ModelServer::channelsLinked(GlobalID outputNode, GlobalID inputNode) const {
  std::set<std::string> channels;
  for (const auto& [id, link] : graph.links)
    if (link.outputNode == outputNode && link.inputNode == inputNode)
      channels.insert(graph.ports.at(link.outputPort).channel + ">" + graph.ports.at(link.inputPort).channel);
  return channels;
}

bool ModelServer::ownLinksCarry(GlobalID outputNode, GlobalID inputNode) const {
  return std::ranges::any_of(graph.links, [&](const auto& entry) {
    const auto& link = entry.second;
    const auto own = owned.links.find({link.outputPort, link.inputPort});
    return link.outputNode == outputNode && link.inputNode == inputNode && own != owned.links.end() &&
           own->second;
  });
}

bool ModelServer::reachesASink(const std::string& tapName) const {
  const auto tap = graph.nodeNamed(tapName);
  return tap && std::ranges::any_of(graph.nodes, [&](const auto& filter) {
           return ownLinksCarry(*tap, filter.first) &&
                  std::ranges::any_of(graph.nodes, [&](const auto& sink) {
                    return sink.second.kind == NodeKind::sink && ownLinksCarry(filter.first, sink.first);
                  });
         });
}

} // namespace sonvel::pipewire
