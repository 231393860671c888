#include "pipewire/plan_context.h"
#include "pipewire/stream_targets.h"

#include <algorithm>

namespace sonvel::pipewire {

namespace {

/// Links in the session manager's place for streams that it leaves without any, as 0.4 does after a restart.
void planStrandedStreams(const PlanContext& context, Plan& plan) {
  const GraphIndex& graph = context.graph();
  for (const auto stream : graph.streams()) {
    if (!context.owned().stranded.contains(graph.node(stream).serial)) continue;
    const std::string tapName = targetTapOf(graph.graph(), stream);
    const auto tap = context.tapNamed(tapName);
    const bool belongsInTap = tap && context.belongsIn(stream, *tap);
    const auto receiver = belongsInTap ? graph.nodeNamed(tapName) : usersTargetOf(graph.graph(), stream);
    if (!receiver) continue;
    const auto pairs = context.stereoPairs(graph.portsOf(stream, PortDirection::out, false),
                                           graph.portsOf(*receiver, PortDirection::in, false));
    if (belongsInTap)
      std::ranges::copy(pairs, std::back_inserter(plan.strandedLinksToCreate));
    else if (tapName.empty() && !graph.feedsAnything(stream))
      std::ranges::copy(pairs, std::back_inserter(plan.lastingLinksToCreate));
  }
}

} // namespace

void planLinks(const PlanContext& context, Plan& plan) {
  planStrandedStreams(context, plan);
  const auto isOwned = [&](const PortPair& pair) { return context.owned().links.contains(pair); };
  std::set<PortPair> wanted;
  for (const auto& [id, session] : context.desired().sessions)
    std::ranges::copy(context.linksOf(session), std::inserter(wanted, wanted.end()));
  std::ranges::remove_copy_if(wanted, std::back_inserter(plan.linksToCreate), isOwned);
  wanted.insert(plan.strandedLinksToCreate.begin(), plan.strandedLinksToCreate.end());
  std::erase_if(plan.strandedLinksToCreate, isOwned);
  for (const auto& [pair, isReady] : context.owned().links)
    if (!wanted.contains(pair)) plan.linksToDestroy.push_back(pair);
}

} // namespace sonvel::pipewire
