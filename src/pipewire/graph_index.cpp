#include "pipewire/graph_index.h"

#include <algorithm>

namespace sonvel::pipewire {

namespace {

const std::vector<GlobalID> kNone;

template <class Map> const std::vector<GlobalID>& listOf(const Map& map, const typename Map::key_type& key) {
  const auto found = map.find(key);
  return found == map.end() ? kNone : found->second;
}

std::size_t placeOf(PortDirection direction) {
  return direction == PortDirection::in ? 0 : 1;
}

} // namespace

std::optional<ProcessKey> processKeyOf(const Graph& graph, GlobalID client) {
  const auto found = graph.clients.find(client);
  if (found == graph.clients.end() || !found->second.isKnown || found->second.isSoundServer)
    return std::nullopt;
  const AudioClient& facts = found->second.facts;
  if (facts.sandboxAppID) return "application " + *facts.sandboxAppID;
  if (facts.processID <= 0) return "client " + std::to_string(found->second.serial);
  const std::string process = "process " + std::to_string(facts.processID);
  // A program on the PulseAudio socket only claims its process ID. In sandboxes many have the same one (2),
  // so programs with equal IDs are distinguished by name.
  if (found->second.isPulseConnection)
    return process + " " + facts.processBinary.value_or(facts.applicationName.value_or(""));
  return process;
}

GraphIndex::GraphIndex(const Graph& graph)
    : graph_(graph) {
  for (const auto& [id, client] : graph.clients)
    if (auto process = processKeyOf(graph, id)) {
      const ProcessKey& key = processByClient_[id] = std::move(*process);
      clientsByProcess_[key].push_back(id);
    }
  nodes_.reserve(graph.nodes.size());
  ports_.reserve(graph.ports.size());
  links_.reserve(graph.links.size());
  for (const auto& [id, node] : graph.nodes)
    nodes_.emplace(id, &node);
  for (const auto& [id, node] : graph.nodes) {
    nodeBySerial_[node.serial] = id;
    const auto [entry, isNew] = nodeByName_.try_emplace(node.name, id);
    if (!isNew && nodes_.at(entry->second)->serial < node.serial) entry->second = id;
    if (node.kind != NodeKind::outputStream) continue;
    streams_.push_back(id);
    if (const ProcessKey* process = processOf(id)) streamsByProcess_[*process].push_back(id);
  }
  for (const auto& [id, port] : graph.ports) {
    ports_.emplace(id, &port);
    portsByNode_[port.node].at(placeOf(port.direction)).at(port.isMonitor ? 1 : 0).push_back(id);
  }
  for (auto& [node, byDirection] : portsByNode_)
    for (auto& byKind : byDirection)
      for (auto& ports : byKind)
        std::ranges::sort(ports, {}, [&](GlobalID id) { return ports_.at(id)->index; });
  for (const auto& [id, link] : graph.links) {
    links_.emplace(id, &link);
    linksByOutputNode_[link.outputNode].push_back(id);
  }
}

std::optional<GlobalID> GraphIndex::nodeNamed(std::string_view name) const {
  const auto found = nodeByName_.find(name);
  return name.empty() || found == nodeByName_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<GlobalID> GraphIndex::nodeWithSerial(std::uint64_t serial) const {
  const auto found = nodeBySerial_.find(serial);
  return found == nodeBySerial_.end() ? std::nullopt : std::optional(found->second);
}

const std::vector<GlobalID>& GraphIndex::portsOf(GlobalID node, PortDirection direction,
                                                 bool monitors) const {
  const auto found = portsByNode_.find(node);
  return found == portsByNode_.end() ? kNone : found->second.at(placeOf(direction)).at(monitors ? 1 : 0);
}

const std::vector<GlobalID>& GraphIndex::streamsOf(const ProcessKey& process) const {
  return listOf(streamsByProcess_, process);
}

const ProcessKey* GraphIndex::processOf(GlobalID stream) const {
  const Node& node = *nodes_.at(stream);
  return node.client ? processOfClient(*node.client) : nullptr;
}

const std::vector<GlobalID>& GraphIndex::clientsOf(const ProcessKey& process) const {
  return listOf(clientsByProcess_, process);
}

const ProcessKey* GraphIndex::processOfClient(GlobalID client) const {
  const auto found = processByClient_.find(client);
  return found == processByClient_.end() ? nullptr : &found->second;
}

const std::vector<GlobalID>& GraphIndex::linksFrom(GlobalID node) const {
  return listOf(linksByOutputNode_, node);
}

bool GraphIndex::feeds(GlobalID outputNode, GlobalID inputNode) const {
  return std::ranges::any_of(linksFrom(outputNode),
                             [&](GlobalID link) { return links_.at(link)->inputNode == inputNode; });
}

const GraphIndex& LatestIndex::get() {
  if (!index_ || revision_ != graph_.revision) index_.emplace(graph_);
  revision_ = graph_.revision;
  return *index_;
}

} // namespace sonvel::pipewire
