#include "pipewire/graph.h"

#include <algorithm>

namespace sonvel::pipewire {

std::optional<GlobalID> Graph::nodeNamed(const std::string& name) const {
  std::optional<GlobalID> found;
  std::uint64_t newest = 0;
  for (const auto& [id, node] : nodes) {
    if (node.name != name || (found && node.serial < newest)) continue;
    found = id;
    newest = node.serial;
  }
  return found;
}

std::vector<GlobalID> Graph::portsOf(GlobalID node, PortDirection direction, bool monitors) const {
  std::vector<GlobalID> found;
  for (const auto& [id, port] : ports)
    if (port.node == node && port.direction == direction && port.isMonitor == monitors) found.push_back(id);
  std::ranges::sort(found, {}, [this](GlobalID id) { return ports.at(id).index; });
  return found;
}

bool Graph::isLinked(GlobalID outputPort, GlobalID inputPort) const {
  return std::ranges::any_of(links, [&](const auto& entry) {
    return entry.second.outputPort == outputPort && entry.second.inputPort == inputPort;
  });
}

bool Graph::feeds(GlobalID outputNode, GlobalID inputNode) const {
  return std::ranges::any_of(links, [&](const auto& entry) {
    return entry.second.outputNode == outputNode && entry.second.inputNode == inputNode;
  });
}

const MetadataValue* Graph::metadataOf(GlobalID subject, const std::string& key) const {
  const auto entries = metadata.find(subject);
  if (entries == metadata.end()) return nullptr;
  const auto entry = entries->second.find(key);
  return entry == entries->second.end() ? nullptr : &entry->second;
}

} // namespace sonvel::pipewire
