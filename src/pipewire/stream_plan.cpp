#include "pipewire/plan_context.h"
#include "pipewire/stream_targets.h"

#include <algorithm>

namespace sonvel::pipewire {

namespace {

bool isCaptured(const OwnedObjects& owned, const std::string& tapName, std::uint64_t serial) {
  const auto streams = owned.captured.find(tapName);
  return streams != owned.captured.end() && streams->second.contains(serial);
}

/// The tap that each stream is to be sent into now: the newest of those that want it and are heard.
std::map<GlobalID, AudioObjectID> capturingTaps(const PlanContext& context) {
  std::map<GlobalID, AudioObjectID> taps;
  for (const auto& [id, session] : context.desired().sessions) {
    if (session.isStopping || !context.isConnected(session)) continue;
    for (const auto tap : session.taps) {
      if (!context.isRead(tap)) continue;
      for (const auto stream : context.streamsOf(context.desired().taps.at(tap)))
        if (!context.graph().node(stream).cannotBeMoved) taps[stream] = std::max(taps[stream], tap);
    }
  }
  return taps;
}

/// Links that play a captured stream past its tap.
void planCuts(const GraphIndex& graph, GlobalID stream, const std::string& tapName, Plan& plan) {
  const auto tapNode = graph.nodeNamed(tapName);
  if (!tapNode || !graph.feeds(stream, *tapNode)) return;
  for (const auto linkID : graph.linksFrom(stream)) {
    const auto receiver = graph.graph().nodes.find(graph.graph().links.at(linkID).inputNode);
    if (receiver != graph.graph().nodes.end() && receiver->second.kind == NodeKind::sink)
      plan.foreignLinksToCut.push_back(linkID);
  }
}

/// Whether a stream has something of ours on it, or plays into something of ours, that should not be so.
bool mustReturn(const PlanContext& context, GlobalID stream) {
  const GraphIndex& graph = context.graph();
  const std::string tapName = targetTapOf(graph.graph(), stream);
  if (tapName.empty()) {
    if (hasLeftover(graph.graph(), stream)) return true;
    // A stranger: its own target is an ID that one of our nodes was given, or the session manager's choice.
    return std::ranges::any_of(context.desired().taps, [&](const auto& tap) {
      const auto node = graph.nodeNamed(tap.second.nodeName);
      return node && graph.feeds(stream, *node) && !context.belongsIn(stream, tap.first);
    });
  }
  // A tap that waits for its links again keeps its streams: they are heard as soon as the links are back.
  if (const auto tap = context.tapNamed(tapName)) return !context.belongsIn(stream, *tap);
  // Another run of this program may have a tap of its own: as long as its node is there, that is its
  // business.
  return !graph.nodeNamed(tapName).has_value();
}

} // namespace

void planStreams(const PlanContext& context, Plan& plan) {
  const GraphIndex& graph = context.graph();
  const auto capturing = capturingTaps(context);
  for (const auto stream : graph.streams()) {
    const auto tap = capturing.find(stream);
    if (tap == capturing.end()) {
      if (mustReturn(context, stream)) plan.routings.push_back({stream, ""});
      continue;
    }
    const std::string& tapName = context.desired().taps.at(tap->second).nodeName;
    if (targetTapOf(graph.graph(), stream) == tapName)
      planCuts(graph, stream, tapName, plan);
    else if (!isCaptured(context.owned(), tapName, graph.node(stream).serial))
      plan.routings.push_back({stream, tapName});
    else if (mustReturn(context, stream)) // its user moved it after it was sent: there it stays
      plan.routings.push_back({stream, ""});
  }
}

} // namespace sonvel::pipewire
