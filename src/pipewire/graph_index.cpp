#include "pipewire/graph_index.h"

#include <algorithm>

namespace sonvel::pipewire {

namespace {

const std::vector<GlobalID> kNone;

template <class Map, class Key> const std::vector<GlobalID>& listOf(const Map& map, const Key& key) {
  const auto found = map.find(key);
  return found == map.end() ? kNone : found->second;
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

std::optional<ProcessKey> processKeyOfStream(const Graph& graph, const Node& stream) {
  if (stream.kind != NodeKind::outputStream || !stream.client) return std::nullopt;
  return processKeyOf(graph, *stream.client);
}

GraphIndex::GraphIndex(const Graph& graph)
    : graph_(graph) {
  for (const auto& [id, node] : graph.nodes) {
    const auto [entry, isNew] = nodeByName_.try_emplace(node.name, id);
    if (!isNew && graph.nodes.at(entry->second).serial < node.serial) entry->second = id;
    if (node.kind != NodeKind::outputStream) continue;
    streams_.push_back(id);
    if (auto process = processKeyOfStream(graph, node)) {
      streamsByProcess_[*process].push_back(id);
      processByStream_[id] = std::move(*process);
    }
  }
  for (const auto& [id, port] : graph.ports)
    portsByNode_[port.node].push_back(id);
  for (const auto& [id, link] : graph.links)
    linksByOutputNode_[link.outputNode].push_back(id);
}

std::optional<GlobalID> GraphIndex::nodeNamed(const std::string& name) const {
  const auto found = nodeByName_.find(name);
  return name.empty() || found == nodeByName_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<GlobalID> GraphIndex::portsOf(GlobalID node, PortDirection direction, bool monitors) const {
  std::vector<GlobalID> found;
  for (const auto id : listOf(portsByNode_, node)) {
    const Port& port = graph_.ports.at(id);
    if (port.direction == direction && port.isMonitor == monitors) found.push_back(id);
  }
  std::ranges::sort(found, {}, [this](GlobalID id) { return graph_.ports.at(id).index; });
  return found;
}

const std::vector<GlobalID>& GraphIndex::streamsOf(const ProcessKey& process) const {
  return listOf(streamsByProcess_, process);
}

const ProcessKey* GraphIndex::processOf(GlobalID stream) const {
  const auto found = processByStream_.find(stream);
  return found == processByStream_.end() ? nullptr : &found->second;
}

const std::vector<GlobalID>& GraphIndex::linksFrom(GlobalID node) const {
  return listOf(linksByOutputNode_, node);
}

bool GraphIndex::feeds(GlobalID outputNode, GlobalID inputNode) const {
  return std::ranges::any_of(linksFrom(outputNode),
                             [&](GlobalID link) { return graph_.links.at(link).inputNode == inputNode; });
}

} // namespace sonvel::pipewire
