#include "pipewire/graph_plan.h"

#include "pipewire/plan_context.h"
#include "pipewire/stream_targets.h"

#include <algorithm>

namespace sonvel::pipewire {

namespace {

/// A tap's node goes when the last of its streams has left that has somewhere to go.
bool canLoseNode(const PlanContext& context, const DesiredTap& tap) {
  const GraphIndex& graph = context.graph();
  const auto node = graph.nodeNamed(tap.nodeName);
  return !node || std::ranges::none_of(context.streamsOf(tap), [&](GlobalID stream) {
    return graph.feeds(stream, *node) && usersTargetOf(graph.graph(), stream);
  });
}

void planTapNodes(const PlanContext& context, Plan& plan) {
  const DesiredState& desired = context.desired();
  const auto& nodes = context.owned().tapNodes;
  for (const auto& [id, tap] : desired.taps)
    if (tap.hasNode && !tap.isLeaving && !nodes.contains(id)) plan.tapNodesToCreate.push_back(id);
  for (const auto id : nodes) {
    const auto tap = desired.taps.find(id);
    const bool isUnwanted = tap == desired.taps.end() || !tap->second.hasNode || tap->second.isLeaving;
    if (isUnwanted && (tap == desired.taps.end() || canLoseNode(context, tap->second)))
      plan.tapNodesToDestroy.push_back(id);
  }
}

/// A filter goes after the nodes of its taps, unless others read them: the other way round everyone on the
/// device would lose a cycle.
void planFilters(const PlanContext& context, Plan& plan) {
  const OwnedObjects& owned = context.owned();
  for (const auto& [id, session] : context.desired().sessions) {
    const bool tapsHaveGone = std::ranges::none_of(session.taps, [&](AudioObjectID tap) {
      return owned.tapNodes.contains(tap) && !context.isRead(tap);
    });
    if (!session.isStopping && !owned.filters.contains(id)) plan.filtersToCreate.push_back(id);
    if (session.isStopping && owned.filters.contains(id) && tapsHaveGone) plan.filtersToDestroy.push_back(id);
  }
  for (const auto id : owned.filters)
    if (!context.desired().sessions.contains(id)) plan.filtersToDestroy.push_back(id);
}

/// Whether a stream of a tap plays elsewhere because its user moved it, or in a newer tap on the same
/// process.
bool isElsewhereByChoice(const PlanContext& context, GlobalID stream, const std::string& tapName) {
  const std::string target = targetTapOf(context.graph().graph(), stream);
  if (target == tapName) return false;
  if (const auto other = context.tapNamed(target)) return context.belongsIn(stream, *other);
  const auto captured = context.owned().captured.find(tapName);
  return captured != context.owned().captured.end() &&
         captured->second.contains(context.graph().node(stream).serial);
}

} // namespace

Plan planEdits(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned) {
  const PlanContext context(graph, desired, owned);
  Plan plan;
  planTapNodes(context, plan);
  planFilters(context, plan);
  planLinks(context, plan);
  planStreams(context, plan);
  return plan;
}

bool isSessionConnected(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned,
                        IOProcID session) {
  const auto found = desired.sessions.find(session);
  return found != desired.sessions.end() && PlanContext(graph, desired, owned).isConnected(found->second);
}

bool isSessionEngaged(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned,
                      IOProcID session) {
  const auto found = desired.sessions.find(session);
  if (found == desired.sessions.end()) return false;
  const PlanContext context(graph, desired, owned);
  if (!context.isConnected(found->second)) return false;
  return std::ranges::all_of(found->second.taps, [&](AudioObjectID id) {
    const auto tap = desired.taps.find(id);
    if (tap == desired.taps.end() || !tap->second.isMuted) return true;
    const auto node = context.graph().nodeNamed(tap->second.nodeName);
    return std::ranges::all_of(context.streamsOf(tap->second), [&](GlobalID stream) {
      const Node& player = graph.nodes.at(stream);
      return player.cannotBeMoved || !player.isRunning || (node && context.graph().feeds(stream, *node)) ||
             isElsewhereByChoice(context, stream, tap->second.nodeName);
    });
  });
}

bool feedsAnything(const Graph& graph, GlobalID stream) {
  return std::ranges::any_of(graph.links, [&](const auto& link) { return link.second.outputNode == stream; });
}

bool streamFeeds(const Graph& graph, GlobalID stream, const std::string& nodeName) {
  const auto node = graph.nodeNamed(nodeName);
  return node && graph.feeds(stream, *node);
}

} // namespace sonvel::pipewire
