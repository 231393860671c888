#include "pipewire/graph_plan.h"

#include "pipewire/plan_context.h"
#include "pipewire/stream_targets.h"

#include <algorithm>

namespace sonvel::pipewire {

namespace {

bool isOverdue(const PlanContext& context, AudioObjectID tap) {
  return std::ranges::any_of(context.desired().filters, [&](const auto& filter) {
    return filter.second.isOverdue && filter.second.taps.contains(tap);
  });
}

/// A tap's node may go when no stream that has another destination is left in it.
bool canLoseNode(const PlanContext& context, AudioObjectID tapID, const DesiredTap& tap) {
  const GraphIndex& graph = context.graph();
  const auto node = graph.nodeNamed(tap.nodeName);
  return !node || isOverdue(context, tapID) ||
         std::ranges::none_of(context.streamsOf(tap), [&](GlobalID stream) {
           return graph.feeds(stream, *node) && usersTargetOf(graph, stream);
         });
}

/// Only a tap that is read or standing by has a node. A tap whose device now has another channel count gets a
/// new node.
void planTapNodes(const PlanContext& context, Plan& plan) {
  const auto& nodes = context.owned().tapNodes;
  for (const auto& [id, tap] : context.desired().taps)
    if (context.isRead(id) && !nodes.contains(id)) plan.tapNodesToCreate.push_back(id);
  for (const auto& [id, node] : nodes) {
    const auto tap = context.desired().taps.find(id);
    const bool isGone = tap == context.desired().taps.end();
    const bool isWanted = !isGone && context.isRead(id);
    if (isWanted ? tap->second.isMono != node.isMono : isGone || canLoseNode(context, id, tap->second))
      plan.tapNodesToDestroy.push_back(id);
  }
}

/// A filter ends with the node of its muted tap, or before it if a standby tap keeps the node.
void planFilters(const PlanContext& context, Plan& plan) {
  const OwnedObjects& owned = context.owned();
  for (const auto& [id, filter] : context.desired().filters) {
    const bool tapsHaveGone = std::ranges::none_of(
        filter.taps, [&](AudioObjectID tap) { return owned.tapNodes.contains(tap) && !context.isRead(tap); });
    if (!filter.isStopping && !owned.filters.contains(id)) plan.filtersToCreate.push_back(id);
    if (filter.isStopping && owned.filters.contains(id) && tapsHaveGone) plan.filtersToDestroy.push_back(id);
  }
  for (const auto& [id, filter] : owned.filters)
    if (!context.desired().filters.contains(id)) plan.filtersToDestroy.push_back(id);
}

/// Links streams that the session manager leaves unlinked, as 0.4 does after its restart.
void planStrandedStreams(const PlanContext& context, Plan& plan) {
  const GraphIndex& graph = context.graph();
  for (const auto stream : graph.streams()) {
    if (!context.owned().stranded.contains(graph.node(stream).serial)) continue;
    const auto tapName = targetTapOf(graph.graph(), stream);
    const auto tap = context.tapNamed(tapName);
    const bool belongsInTap = tap && context.belongsIn(stream, *tap);
    const auto receiver = belongsInTap ? graph.nodeNamed(tapName) : usersTargetOf(graph, stream);
    if (!receiver) continue;
    const auto pairs = context.stereoPairs(graph.portsOf(stream, PortDirection::out, false),
                                           graph.portsOf(*receiver, PortDirection::in, false));
    if (belongsInTap)
      std::ranges::copy(pairs, std::back_inserter(plan.strandedLinksToCreate));
    else if (tapName.empty() && !graph.feedsAnything(stream))
      std::ranges::copy(pairs, std::back_inserter(plan.lastingLinksToCreate));
  }
}

using FilterLinks = std::map<IOProcID, std::vector<PortPair>>;

FilterLinks linksOfFilters(const PlanContext& context) {
  FilterLinks links;
  for (const auto& [id, filter] : context.desired().filters)
    links.emplace_hint(links.end(), id, context.linksOf(filter));
  return links;
}

void planLinks(const PlanContext& context, const FilterLinks& links, Plan& plan) {
  planStrandedStreams(context, plan);
  const auto isOwned = [&](const PortPair& pair) { return context.owned().links.contains(pair); };
  std::vector<PortPair> wanted;
  for (const auto& [id, pairs] : links)
    wanted.insert(wanted.end(), pairs.begin(), pairs.end());
  std::ranges::sort(wanted);
  const auto repeated = std::ranges::unique(wanted);
  wanted.erase(repeated.begin(), repeated.end());
  std::ranges::remove_copy_if(wanted, std::back_inserter(plan.linksToCreate), isOwned);
  wanted.insert(wanted.end(), plan.strandedLinksToCreate.begin(), plan.strandedLinksToCreate.end());
  std::ranges::sort(wanted);
  std::erase_if(plan.strandedLinksToCreate, isOwned);
  for (const auto& [pair, link] : context.owned().links)
    if (!std::ranges::binary_search(wanted, pair)) plan.linksToDestroy.push_back(pair);
}

/// Whether a filter may take a stream now, or keep it: the path to the device is linked. A stream that comes
/// from another tap of ours is taken earlier, because a short silence is better than sound at the wrong
/// volume.
bool mayTake(const PlanContext& context, const DesiredFilter& filter, bool isConnected, AudioObjectID tap,
             GlobalID stream) {
  if (filter.isHeld || filter.isStopping) return false;
  if (isConnected) return true;
  const bool isInTap = context.tapNamed(targetTapOf(context.graph().graph(), stream)).has_value();
  return isInTap && context.graph().nodeNamed(context.desired().taps.at(tap).nodeName);
}

/// Whether a stream may enter a tap yet. Its properties may forbid it and must have arrived. PipeWire's
/// PulseAudio server announces a stream to its program only while it is linked to a sink that mixers list,
/// which a tap is not; before that the program does not play.
bool mayEnter(const PlanContext& context, GlobalID stream) {
  const GraphIndex& graph = context.graph();
  const Node& node = graph.node(stream);
  if (node.isUnread || !context.canBeMoved(stream)) return false;
  const auto client = node.client ? graph.graph().clients.find(*node.client) : graph.graph().clients.end();
  return client == graph.graph().clients.end() || !client->second.isPulseConnection || node.isPulseAnnounced;
}

/// The tap that each stream is to be sent into: the newest of those that want it and may take it. A standby
/// tap takes what no other tap wants.
std::map<GlobalID, AudioObjectID> takingTaps(const PlanContext& context, const FilterLinks& links) {
  std::map<GlobalID, AudioObjectID> taps;
  for (const auto& [id, filter] : context.desired().filters) {
    const bool isConnected = context.isConnected(filter, links.at(id));
    for (const auto tap : filter.taps) {
      if (!context.isRead(tap)) continue;
      for (const auto stream : context.streamsOf(context.desired().taps.at(tap)))
        if (mayEnter(context, stream) && mayTake(context, filter, isConnected, tap, stream))
          taps[stream] = std::max(taps[stream], tap);
    }
  }
  for (const auto& [id, tap] : context.desired().taps)
    if (tap.standsBy && context.isRead(id) && context.graph().nodeNamed(tap.nodeName))
      for (const auto stream : context.streamsOf(tap))
        if (mayEnter(context, stream)) taps.try_emplace(stream, id);
  return taps;
}

/// The session manager's links that bypass the tap. Links that other programs made are not cut.
void planCuts(const GraphIndex& graph, GlobalID stream, const std::string& tapName, Plan& plan) {
  const auto tapNode = graph.nodeNamed(tapName);
  if (!tapNode || !graph.feeds(stream, *tapNode)) return;
  for (const auto linkID : graph.linksFrom(stream)) {
    const Link& link = graph.graph().links.at(linkID);
    const auto maker = link.client ? graph.graph().clients.find(*link.client) : graph.graph().clients.end();
    const auto receiver = graph.graph().nodes.find(link.inputNode);
    if (receiver != graph.graph().nodes.end() && receiver->second.kind == NodeKind::sink &&
        maker != graph.graph().clients.end() && maker->second.isSessionManager)
      plan.linksToCut.push_back(linkID);
  }
}

/// Whether a stream has entries or links of ours that must be removed.
bool mustReturn(const PlanContext& context, GlobalID stream) {
  const GraphIndex& graph = context.graph();
  const auto tapName = targetTapOf(graph.graph(), stream);
  if (tapName.empty()) {
    if (hasLeftover(graph.graph(), stream)) return true;
    if (!context.canBeMoved(stream) || isSentAway(graph.graph(), stream))
      return false; // it was linked by someone who does not use targets
    // An unrelated stream: its target is an ID that now belongs to one of our nodes, or the session manager
    // chose our node.
    return std::ranges::any_of(graph.linksFrom(stream), [&](GlobalID link) {
      const auto receiver = graph.graph().nodes.find(graph.graph().links.at(link).inputNode);
      const auto tap =
          receiver == graph.graph().nodes.end() ? std::nullopt : context.tapNamed(receiver->second.name);
      return tap && !context.belongsIn(stream, *tap);
    });
  }
  // A tap that waits for its links keeps its streams; they are heard when the links are back.
  if (const auto tap = context.tapNamed(tapName)) return !context.belongsIn(stream, *tap);
  // The tap may belong to another running instance: leave it alone while its node exists.
  return !graph.nodeNamed(tapName).has_value();
}

void planStreams(const PlanContext& context, const FilterLinks& links, Plan& plan) {
  const GraphIndex& graph = context.graph();
  const auto taking = takingTaps(context, links);
  for (const auto stream : graph.streams()) {
    const auto tap = taking.find(stream);
    if (tap == taking.end()) {
      if (mustReturn(context, stream)) plan.routings.push_back({stream, ""});
      continue;
    }
    const std::string& tapName = context.desired().taps.at(tap->second).nodeName;
    if (targetTapOf(graph.graph(), stream) != tapName || isChoiceOutdated(graph.graph(), stream))
      plan.routings.push_back({stream, tapName});
    else
      planCuts(graph, stream, tapName, plan);
  }
}

} // namespace

Plan planEdits(const GraphIndex& graph, const DesiredState& desired, const OwnedObjects& owned) {
  const PlanContext context(graph, desired, owned);
  Plan plan;
  planTapNodes(context, plan);
  planFilters(context, plan);
  const auto links = linksOfFilters(context);
  planLinks(context, links, plan);
  planStreams(context, links, plan);
  return plan;
}

bool isFilterConnected(const GraphIndex& graph, const DesiredState& desired, const OwnedObjects& owned,
                       IOProcID ioProc) {
  const auto found = desired.filters.find(ioProc);
  if (found == desired.filters.end()) return false;
  const PlanContext context(graph, desired, owned);
  return context.isConnected(found->second, context.linksOf(found->second));
}

bool isTapPartial(const GraphIndex& graph, const DesiredTap& tap, const std::set<std::uint64_t>& immovable) {
  return tap.isMuted && std::ranges::any_of(tap.processes, [&](const ProcessKey& process) {
           return std::ranges::any_of(graph.streamsOf(process), [&](GlobalID stream) {
             return !canBeMoved(graph.node(stream), immovable);
           });
         });
}

} // namespace sonvel::pipewire
