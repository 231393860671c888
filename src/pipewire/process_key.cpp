#include "pipewire/process_key.h"

namespace sonvel::pipewire {

std::optional<ProcessKey> processKeyOf(const Graph& graph, GlobalID client) {
  const auto found = graph.clients.find(client);
  if (found == graph.clients.end() || !found->second.isKnown || found->second.isSoundServer)
    return std::nullopt;
  const AudioClient& facts = found->second.facts;
  if (facts.sandboxAppID) return "application " + *facts.sandboxAppID;
  if (facts.processID > 0) return "process " + std::to_string(facts.processID);
  return "client " + std::to_string(found->second.serial);
}

std::optional<ProcessKey> processKeyOfStream(const Graph& graph, const Node& stream) {
  if (stream.kind != NodeKind::outputStream || !stream.client) return std::nullopt;
  return processKeyOf(graph, *stream.client);
}

} // namespace sonvel::pipewire
