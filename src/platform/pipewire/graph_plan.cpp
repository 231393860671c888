#include "platform/pipewire/graph_plan.h"

#include "platform/pipewire/stream_targets.h"

#include <algorithm>

namespace sonvel::pipewire {

namespace {

/// Joins left to left and right to right; a single or unnamed channel goes to, or comes from, both.
std::vector<PortPair> stereoPairs(const Graph& graph, const std::vector<GlobalID>& outputs,
                                  const std::vector<GlobalID>& inputs) {
  std::vector<PortPair> pairs;
  const auto channelOf = [&](GlobalID port) -> const std::string& { return graph.ports.at(port).channel; };
  const auto named = [&](const std::vector<GlobalID>& ports) {
    return std::ranges::any_of(ports, [&](GlobalID port) { return channelOf(port) == "FL"; });
  };
  if (named(outputs) && named(inputs)) {
    for (const auto output : outputs)
      for (const auto input : inputs)
        if (channelOf(output) == channelOf(input) && (channelOf(input) == "FL" || channelOf(input) == "FR"))
          pairs.push_back({output, input});
    return pairs;
  }
  if (named(inputs)) { // something else than stereo into stereo
    for (std::size_t i = 0; i < outputs.size(); ++i)
      for (std::size_t side = 0; side < inputs.size(); ++side)
        if (outputs.size() == 1 || i % 2 == side) pairs.push_back({outputs[i], inputs[side]});
    return pairs;
  }
  for (std::size_t i = 0; i < outputs.size() && !inputs.empty(); ++i)
    pairs.push_back({outputs[i], inputs[std::min(i, inputs.size() - 1)]});
  return pairs;
}

std::vector<GlobalID> streamsOf(const Graph& graph, const DesiredTap& tap) {
  std::vector<GlobalID> streams;
  for (const auto& [id, node] : graph.nodes) {
    const auto process = processKeyOfStream(graph, node);
    if (process && tap.processes.contains(*process)) streams.push_back(id);
  }
  return streams;
}

std::vector<PortPair> tapToFilter(const Graph& graph, const DesiredTap& tap,
                                  const std::vector<GlobalID>& inputs) {
  std::vector<PortPair> pairs;
  if (tap.isMuted) {
    const auto node = graph.nodeNamed(tap.nodeName);
    return node ? stereoPairs(graph, graph.portsOf(*node, PortDirection::out, true), inputs) : pairs;
  }
  for (const auto stream : streamsOf(graph, tap))
    std::ranges::copy(stereoPairs(graph, graph.portsOf(stream, PortDirection::out, false), inputs),
                      std::back_inserter(pairs));
  return pairs;
}

/// All links that a session needs; fewer while something it needs is not there.
std::vector<PortPair> linksOf(const Graph& graph, const DesiredState& desired,
                              const DesiredSession& session) {
  const auto filter = graph.nodeNamed(session.filterName);
  if (!filter) return {};
  std::vector<PortPair> pairs;
  const auto inputs = graph.portsOf(*filter, PortDirection::in, false);
  for (const auto tapID : session.taps)
    if (const auto tap = desired.taps.find(tapID); tap != desired.taps.end())
      std::ranges::copy(tapToFilter(graph, tap->second, inputs), std::back_inserter(pairs));
  if (const auto device = graph.nodeNamed(session.deviceName))
    std::ranges::copy(stereoPairs(graph, graph.portsOf(*filter, PortDirection::out, false),
                                  graph.portsOf(*device, PortDirection::in, false)),
                      std::back_inserter(pairs));
  return pairs;
}

bool wantsStreams(const DesiredState& desired, AudioObjectID tap) {
  return desired.taps.at(tap).isMuted && std::ranges::any_of(desired.sessions, [&](const auto& session) {
           return !session.second.isStopping && session.second.taps.contains(tap);
         });
}

/// The taps that streams can be sent into now: those that want them and whose session's links stand.
std::set<AudioObjectID> capturingTaps(const Graph& graph, const DesiredState& desired,
                                      const OwnedObjects& owned) {
  std::set<AudioObjectID> taps;
  for (const auto& [id, session] : desired.sessions) {
    if (session.isStopping || !isSessionConnected(graph, desired, owned, id)) continue;
    for (const auto tap : session.taps)
      if (desired.taps.contains(tap) && wantsStreams(desired, tap)) taps.insert(tap);
  }
  return taps;
}

bool isCaptured(const OwnedObjects& owned, const std::string& tapName, std::uint64_t serial) {
  const auto streams = owned.captured.find(tapName);
  return streams != owned.captured.end() && streams->second.contains(serial);
}

/// Sends the streams of capturing taps into them. A stream that was sent once and has another target now was
/// moved by its user: it stays there.
void planCaptures(const Graph& graph, const DesiredTap& tap, const OwnedObjects& owned, Plan& plan) {
  const auto tapNode = graph.nodeNamed(tap.nodeName);
  for (const auto id : streamsOf(graph, tap)) {
    const Node& stream = graph.nodes.at(id);
    if (stream.cannotBeMoved) continue;
    if (targetTapOf(graph, id) != tap.nodeName) {
      if (!isCaptured(owned, tap.nodeName, stream.serial)) plan.routings.push_back({id, tap.nodeName});
      continue;
    }
    if (!tapNode || !graph.feeds(id, *tapNode)) continue;
    for (const auto& [linkID, link] : graph.links) {
      if (link.outputNode != id || link.inputNode == *tapNode) continue;
      const auto receiver = graph.nodes.find(link.inputNode);
      if (receiver != graph.nodes.end() && receiver->second.kind == NodeKind::sink)
        plan.foreignLinksToCut.push_back(linkID);
    }
  }
}

/// Sends back what is in a tap that does not want it: of ours, or of a run that was killed.
void planReturns(const Graph& graph, const DesiredState& desired, Plan& plan) {
  const auto belongsIn = [&](const Node& stream, const std::string& tapName) {
    const auto process = processKeyOfStream(graph, stream);
    const auto tap = std::ranges::find_if(
        desired.taps, [&](const auto& entry) { return entry.second.nodeName == tapName; });
    // Another run of this program may have a tap of its own: as long as its node is there, that is its
    // business.
    if (tap == desired.taps.end()) return graph.nodeNamed(tapName).has_value();
    // A tap that waits for its links again keeps its streams: they are heard as soon as the links are back.
    return wantsStreams(desired, tap->first) && process && tap->second.processes.contains(*process);
  };
  for (const auto& [id, stream] : graph.nodes) {
    if (stream.kind != NodeKind::outputStream) continue;
    const std::string tapName = targetTapOf(graph, id);
    if (!tapName.empty() && !belongsIn(stream, tapName)) plan.routings.push_back({id, ""});
  }
}

/// A tap's node goes when the last of its streams has left. Without a session manager none could leave:
/// losing the node is then what gives them back as soon as there is one.
bool canLoseNode(const Graph& graph, const DesiredTap& tap) {
  const auto node = graph.nodeNamed(tap.nodeName);
  return !node || !graph.hasMetadata || std::ranges::none_of(streamsOf(graph, tap), [&](GlobalID stream) {
    return graph.feeds(stream, *node);
  });
}

void planTapNodes(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned, Plan& plan) {
  for (const auto& [id, tap] : desired.taps)
    if (tap.hasNode && !owned.tapNodes.contains(id)) plan.tapNodesToCreate.push_back(id);
  for (const auto id : owned.tapNodes) {
    const auto tap = desired.taps.find(id);
    if (tap == desired.taps.end() || (!tap->second.hasNode && canLoseNode(graph, tap->second)))
      plan.tapNodesToDestroy.push_back(id);
  }
}

/// A filter goes after the nodes of its taps: the other way round everyone on the device would lose a cycle.
void planFilters(const DesiredState& desired, const OwnedObjects& owned, Plan& plan) {
  for (const auto& [id, session] : desired.sessions) {
    const bool tapsHaveGone =
        std::ranges::none_of(session.taps, [&](AudioObjectID tap) { return owned.tapNodes.contains(tap); });
    if (!session.isStopping && !owned.filters.contains(id)) plan.filtersToCreate.push_back(id);
    if (session.isStopping && owned.filters.contains(id) && tapsHaveGone) plan.filtersToDestroy.push_back(id);
  }
  for (const auto id : owned.filters)
    if (!desired.sessions.contains(id)) plan.filtersToDestroy.push_back(id);
}

/// Links in the session manager's place for streams that it leaves without any, as 0.4 does after a restart.
void planStrandedStreams(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned,
                         Plan& plan) {
  for (const auto& [id, stream] : graph.nodes) {
    if (!owned.stranded.contains(stream.serial) || stream.kind != NodeKind::outputStream) continue;
    const std::string tapName = targetTapOf(graph, id);
    const bool belongsInTap = std::ranges::any_of(desired.taps, [&](const auto& tap) {
      return tap.second.nodeName == tapName && wantsStreams(desired, tap.first);
    });
    const auto receiver = belongsInTap ? graph.nodeNamed(tapName) : usersTargetOf(graph, id);
    if (!receiver) continue;
    const auto pairs = stereoPairs(graph, graph.portsOf(id, PortDirection::out, false),
                                   graph.portsOf(*receiver, PortDirection::in, false));
    if (belongsInTap)
      std::ranges::copy(pairs, std::back_inserter(plan.strandedLinksToCreate));
    else if (!feedsAnything(graph, id) && tapName.empty())
      std::ranges::copy(pairs, std::back_inserter(plan.lastingLinksToCreate));
  }
}

void planLinks(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned, Plan& plan) {
  std::set<PortPair> wanted;
  for (const auto& [id, session] : desired.sessions)
    std::ranges::copy(linksOf(graph, desired, session), std::inserter(wanted, wanted.end()));
  for (const auto& pair : wanted)
    if (!owned.links.contains(pair)) plan.linksToCreate.push_back(pair);
  wanted.insert(plan.strandedLinksToCreate.begin(), plan.strandedLinksToCreate.end());
  std::erase_if(plan.strandedLinksToCreate, [&](const PortPair& pair) { return owned.links.contains(pair); });
  for (const auto& [pair, isReady] : owned.links)
    if (!wanted.contains(pair)) plan.linksToDestroy.push_back(pair);
}

} // namespace

bool feedsAnything(const Graph& graph, GlobalID stream) {
  return std::ranges::any_of(graph.links, [&](const auto& link) { return link.second.outputNode == stream; });
}

bool streamFeeds(const Graph& graph, GlobalID stream, const std::string& nodeName) {
  const auto node = graph.nodeNamed(nodeName);
  return node && graph.feeds(stream, *node);
}

bool isSessionConnected(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned,
                        IOProcID session) {
  const auto found = desired.sessions.find(session);
  if (found == desired.sessions.end()) return false;
  const auto device = graph.nodeNamed(found->second.deviceName);
  const auto filter = graph.nodeNamed(found->second.filterName);
  if (!device || !filter) return false;
  const auto wanted = linksOf(graph, desired, found->second);
  const auto isReady = [&](const PortPair& pair) {
    const auto link = owned.links.find(pair);
    return link != owned.links.end() && link->second;
  };
  const bool reachesDevice = std::ranges::any_of(
      wanted, [&](const PortPair& pair) { return graph.ports.at(pair.input).node == *device; });
  const bool hearsTaps = std::ranges::all_of(found->second.taps, [&](AudioObjectID id) {
    const auto tap = desired.taps.find(id);
    if (tap == desired.taps.end() || !tap->second.isMuted) return true;
    const auto node = graph.nodeNamed(tap->second.nodeName);
    return node && std::ranges::any_of(wanted, [&](const PortPair& pair) {
             return graph.ports.at(pair.output).node == *node;
           });
  });
  return reachesDevice && hearsTaps && std::ranges::all_of(wanted, isReady);
}

bool isSessionEngaged(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned,
                      IOProcID session) {
  if (!isSessionConnected(graph, desired, owned, session)) return false;
  return std::ranges::all_of(desired.sessions.at(session).taps, [&](AudioObjectID id) {
    const auto tap = desired.taps.find(id);
    if (tap == desired.taps.end() || !tap->second.isMuted) return true;
    const auto streams = streamsOf(graph, tap->second);
    return std::ranges::all_of(streams, [&](GlobalID stream) {
      const Node& node = graph.nodes.at(stream);
      return node.cannotBeMoved || !node.isRunning || streamFeeds(graph, stream, tap->second.nodeName) ||
             (isCaptured(owned, tap->second.nodeName, node.serial) &&
              targetTapOf(graph, stream) != tap->second.nodeName); // its user moved it
    });
  });
}

Plan planEdits(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned) {
  Plan plan;
  planTapNodes(graph, desired, owned, plan);
  planFilters(desired, owned, plan);
  planStrandedStreams(graph, desired, owned, plan);
  planLinks(graph, desired, owned, plan);
  for (const auto id : capturingTaps(graph, desired, owned))
    planCaptures(graph, desired.taps.at(id), owned, plan);
  planReturns(graph, desired, plan);
  return plan;
}

} // namespace sonvel::pipewire
