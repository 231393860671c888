#include "pipewire/stream_targets.h"

#include "pipewire/desired_state.h"

namespace sonvel::pipewire {

namespace {

// The session manager obeys kTargetObject before kTargetNode, whose meaning is the same; mixers write both.
constexpr auto kTargetObject = "target.object";
constexpr auto kTargetNode = "target.node";
constexpr auto kFollowsDefault = "-1";
constexpr auto kUsersTarget =
    "sonvel.target.object"; // the user's kTargetObject, while ours stands in its place

/// With each write of a target the session manager remembers what it names, and forgets what it can't find:
/// our taps, so that no other program is ever sent into one. Writing the user's own target again makes it
/// remember that. An equal value would not count as a write, so the key goes first.
void remember(const Graph& graph, GlobalID stream, std::vector<MetadataWrite>& writes) {
  const MetadataValue* users = graph.metadataOf(stream, kTargetNode);
  if (users == nullptr || users->value == kFollowsDefault) return;
  writes.push_back({kTargetNode, std::nullopt});
  writes.push_back({kTargetNode, *users});
}

/// Sends a stream to the default device that came into a tap by itself: over an ID in its target that the
/// tap's node has been given since, or because the session manager chose so.
std::vector<MetadataWrite> writesAway(const Graph& graph, GlobalID stream) {
  std::vector<MetadataWrite> writes;
  if (graph.metadataOf(stream, kTargetNode) != nullptr) writes.push_back({kTargetNode, std::nullopt});
  writes.push_back({kTargetObject, MetadataValue{"Spa:Id", kFollowsDefault}});
  return writes;
}

} // namespace

std::string targetTapOf(const Graph& graph, GlobalID stream) {
  const MetadataValue* target = graph.metadataOf(stream, kTargetObject);
  return target != nullptr && target->value.starts_with(kTapNamePrefix) ? target->value : std::string();
}

bool hasLeftover(const Graph& graph, GlobalID stream) {
  return targetTapOf(graph, stream).empty() && graph.metadataOf(stream, kUsersTarget) != nullptr;
}

std::optional<GlobalID> usersTargetOf(const Graph& graph, GlobalID stream) {
  const bool isOurs = !targetTapOf(graph, stream).empty();
  if (const MetadataValue* target = graph.metadataOf(stream, isOurs ? kUsersTarget : kTargetObject))
    for (const auto& [id, node] : graph.nodes)
      if (target->value == node.name || target->value == std::to_string(node.serial)) return id;
  if (const MetadataValue* target = graph.metadataOf(stream, kTargetNode))
    for (const auto& [id, node] : graph.nodes)
      if (target->value == node.name || target->value == std::to_string(id)) return id;
  return graph.defaultSinkName.empty() ? std::nullopt : graph.nodeNamed(graph.defaultSinkName);
}

std::vector<MetadataWrite> writesInto(const Graph& graph, GlobalID stream, const std::string& tapName) {
  std::vector<MetadataWrite> writes;
  if (targetTapOf(graph, stream).empty()) {
    if (const MetadataValue* users = graph.metadataOf(stream, kTargetObject))
      writes.push_back({kUsersTarget, *users});
    else if (hasLeftover(graph, stream)) // the choice that it kept is no longer the user's
      writes.push_back({kUsersTarget, std::nullopt});
  }
  writes.push_back({kTargetObject, MetadataValue{"Spa:String", tapName}});
  remember(graph, stream, writes);
  return writes;
}

std::vector<MetadataWrite> writesBack(const Graph& graph, GlobalID stream) {
  const MetadataValue* users = graph.metadataOf(stream, kUsersTarget);
  if (targetTapOf(graph, stream).empty()) {
    if (users != nullptr) return {{kUsersTarget, std::nullopt}};
    return writesAway(graph, stream);
  }
  std::vector<MetadataWrite> writes;
  if (users != nullptr) {
    writes.push_back({kTargetObject, *users});
    writes.push_back({kUsersTarget, std::nullopt});
  } else {
    writes.push_back({kTargetObject, std::nullopt});
    remember(graph, stream, writes);
  }
  return writes;
}

} // namespace sonvel::pipewire
