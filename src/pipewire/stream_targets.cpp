#include "pipewire/stream_targets.h"

#include "pipewire/desired_state.h"

#include <charconv>
#include <system_error>

namespace sonvel::pipewire {

namespace {

// The session manager prefers kTargetObject to kTargetNode. Mixers write both, WirePlumber's memory one of
// them.
constexpr auto kTargetObject = "target.object"; // a node's name or serial
constexpr auto kTargetNode = "target.node";     // a node's ID
constexpr auto kFollowsDefault = "-1";

// While a stream is in a tap: kUsersTarget holds the user's kTargetObject, which ours replaces; kLentNode
// holds the value that we wrote to kTargetNode. Without kLentNode, kTargetNode is the user's own.
constexpr auto kUsersTarget = "sonvel.target.object";
constexpr auto kLentNode = "sonvel.target.node";

std::optional<GlobalID> nodeOfTarget(const GraphIndex& index, const std::string& target, bool isID) {
  if (const auto named = index.nodeNamed(target)) return named;
  std::uint64_t number = 0;
  const char* end = target.data() + target.size();
  if (const auto read = std::from_chars(target.data(), end, number);
      read.ec != std::errc() || read.ptr != end)
    return std::nullopt;
  if (!isID) return index.nodeWithSerial(number);
  const auto node = index.graph().nodes.find(static_cast<GlobalID>(number));
  return node == index.graph().nodes.end() || node->first != number ? std::nullopt
                                                                    : std::optional(node->first);
}

/// The user's kTargetNode; null if it is missing or written by us.
const MetadataValue* usersTargetNode(const Graph& graph, GlobalID stream) {
  const MetadataValue* target = graph.metadataOf(stream, kTargetNode);
  const MetadataValue* lent = graph.metadataOf(stream, kLentNode);
  return target != nullptr && lent != nullptr && lent->value == target->value ? nullptr : target;
}

/// The user's choice, as the session manager reads it.
struct Choice {
  const MetadataValue* object = nullptr;
  const MetadataValue* node = nullptr;
};

Choice choiceOf(const Graph& graph, GlobalID stream) {
  static const MetadataValue follow{"Spa:Id", kFollowsDefault};
  if (const auto found = graph.nodes.find(stream); found != graph.nodes.end() && found->second.overwritten) {
    const auto& [key, value] = *found->second.overwritten;
    if (!value || value->value == kFollowsDefault) return {.object = &follow};
    return key == kTargetObject ? Choice{.object = &*value} : Choice{.node = &*value};
  }
  const bool isTapped = !targetTapOf(graph, stream).empty();
  Choice choice{.object = graph.metadataOf(stream, isTapped ? kUsersTarget : kTargetObject),
                .node = usersTargetNode(graph, stream)};
  // We wrote a target.node and someone has changed it since: that is the newer choice.
  if (isTapped && choice.node != nullptr && graph.metadataOf(stream, kLentNode) != nullptr)
    choice.object = nullptr;
  return choice;
}

/// On each write of a target the session manager stores the device that it names. It looks targets up by
/// serial, so it does not find our taps by name: it forgets the stream's device, but never stores a tap.
/// Writing the ID of the user's own device afterwards makes it store that device, while the stream still goes
/// to the tap. Writing an equal value has no effect, so the key is removed first.
void remind(const GraphIndex& index, GlobalID stream, const Choice& choice,
            std::vector<MetadataWrite>& writes) {
  const Graph& graph = index.graph();
  const bool hasNode = graph.metadataOf(stream, kTargetNode) != nullptr;
  const bool hasLent = graph.metadataOf(stream, kLentNode) != nullptr;
  if (choice.object == nullptr && choice.node != nullptr) { // the user's own
    if (hasLent) writes.push_back({kLentNode, std::nullopt});
    if (choice.node->value == kFollowsDefault) return;
    writes.push_back({kTargetNode, std::nullopt});
    writes.push_back({kTargetNode, *choice.node});
    return;
  }
  const auto device =
      choice.object == nullptr ? std::nullopt : nodeOfTarget(index, choice.object->value, false);
  if (!device) {
    if (hasLent && choice.node == nullptr && hasNode) writes.push_back({kTargetNode, std::nullopt});
    if (hasLent) writes.push_back({kLentNode, std::nullopt});
    return;
  }
  const MetadataValue id{"Spa:Id", std::to_string(*device)};
  const bool isUsers = choice.node != nullptr && choice.node->value == id.value;
  if (!isUsers)
    writes.push_back({kLentNode, id});
  else if (hasLent)
    writes.push_back({kLentNode, std::nullopt});
  if (hasNode) writes.push_back({kTargetNode, std::nullopt});
  writes.push_back({kTargetNode, id});
}

/// Sends a stream that entered a tap by itself to the default device. That happens if its target is an ID
/// that the tap's node has now, or if the session manager chose the tap.
std::vector<MetadataWrite> writesAway(const Graph& graph, GlobalID stream) {
  std::vector<MetadataWrite> writes;
  if (graph.metadataOf(stream, kTargetNode) != nullptr) writes.push_back({kTargetNode, std::nullopt});
  writes.push_back({kTargetObject, MetadataValue{"Spa:Id", kFollowsDefault}});
  return writes;
}

/// Removes the target.node that we wrote.
void takeBackLent(const Graph& graph, GlobalID stream, std::vector<MetadataWrite>& writes) {
  if (graph.metadataOf(stream, kLentNode) == nullptr) return;
  if (graph.metadataOf(stream, kTargetNode) != nullptr && usersTargetNode(graph, stream) == nullptr)
    writes.push_back({kTargetNode, std::nullopt});
  writes.push_back({kLentNode, std::nullopt});
}

} // namespace

std::string_view targetTapOf(const Graph& graph, GlobalID stream) {
  const MetadataValue* target = graph.metadataOf(stream, kTargetObject);
  return target != nullptr && target->value.starts_with(kTapNamePrefix) ? target->value : std::string_view();
}

bool hasLeftover(const Graph& graph, GlobalID stream) {
  return targetTapOf(graph, stream).empty() && (graph.metadataOf(stream, kUsersTarget) != nullptr ||
                                                graph.metadataOf(stream, kLentNode) != nullptr);
}

bool isSentAway(const Graph& graph, GlobalID stream) {
  const MetadataValue* target = graph.metadataOf(stream, kTargetObject);
  return target != nullptr && target->value == kFollowsDefault &&
         graph.metadataOf(stream, kTargetNode) == nullptr;
}

std::optional<GlobalID> chosenNodeOf(const GraphIndex& index, GlobalID stream) {
  const Choice choice = choiceOf(index.graph(), stream);
  if (choice.object != nullptr) return nodeOfTarget(index, choice.object->value, false);
  if (choice.node != nullptr) return nodeOfTarget(index, choice.node->value, true);
  const auto node = index.graph().nodes.find(stream);
  return node == index.graph().nodes.end() ? std::nullopt
                                           : nodeOfTarget(index, node->second.ownTarget, false);
}

std::optional<GlobalID> usersTargetOf(const GraphIndex& index, GlobalID stream) {
  if (const auto chosen = chosenNodeOf(index, stream)) return chosen;
  return index.nodeNamed(index.graph().defaultSinkName);
}

bool isTarget(std::string_view key) {
  return key == kTargetObject || key == kTargetNode;
}

bool isChoiceInTap(const Graph& graph, GlobalID stream, const MetadataWrite& change) {
  if (targetTapOf(graph, stream).empty() || !graph.nodes.at(stream).wasLinked) return false;
  return change.key == kTargetObject || (change.key == kTargetNode && change.value);
}

bool isChoiceOutdated(const Graph& graph, GlobalID stream) {
  if (targetTapOf(graph, stream).empty()) return false;
  const auto node = graph.nodes.find(stream);
  return (node != graph.nodes.end() && node->second.overwritten) ||
         (graph.metadataOf(stream, kLentNode) != nullptr && usersTargetNode(graph, stream) != nullptr);
}

std::vector<MetadataWrite> writesInto(const GraphIndex& index, GlobalID stream, const std::string& tapName) {
  const Graph& graph = index.graph();
  std::vector<MetadataWrite> writes;
  const Choice choice = choiceOf(graph, stream);
  const MetadataValue* kept = graph.metadataOf(stream, kUsersTarget);
  if (choice.object == nullptr && kept != nullptr)
    writes.push_back({kUsersTarget, std::nullopt}); // the choice that it stored is outdated
  else if (choice.object != nullptr && (kept == nullptr || *kept != *choice.object))
    writes.push_back({kUsersTarget, *choice.object});
  writes.push_back({kTargetObject, MetadataValue{"Spa:String", tapName}});
  remind(index, stream, choice, writes);
  return writes;
}

std::vector<MetadataWrite> writesBack(const Graph& graph, GlobalID stream) {
  std::vector<MetadataWrite> writes;
  const MetadataValue* kept = graph.metadataOf(stream, kUsersTarget);
  if (targetTapOf(graph, stream).empty()) {
    if (!hasLeftover(graph, stream)) return writesAway(graph, stream);
    takeBackLent(graph, stream, writes);
    if (kept != nullptr) writes.push_back({kUsersTarget, std::nullopt});
    return writes;
  }
  const Choice choice = choiceOf(graph, stream);
  takeBackLent(graph, stream, writes);
  if (choice.object != nullptr) {
    writes.push_back({kTargetObject, *choice.object});
  } else {
    writes.push_back({kTargetObject, std::nullopt});
    if (choice.node != nullptr && choice.node->value != kFollowsDefault) {
      writes.push_back({kTargetNode, std::nullopt});
      writes.push_back({kTargetNode, *choice.node});
    }
  }
  if (kept != nullptr) writes.push_back({kUsersTarget, std::nullopt});
  return writes;
}

} // namespace sonvel::pipewire
