#include "pipewire/stubborn_streams.h"

#include "pipewire/server_quirks.h"

#include <algorithm>

namespace sonvel::pipewire {

namespace {

using namespace std::chrono_literals;

// A session manager normally moves a stream within milliseconds.
constexpr auto kComesWithin = 2s;

// A busy one needs longer. The wait before a stream is tried again doubles each time.
constexpr auto kFirstRetry = 10s;
constexpr auto kLastRetry = 80s;

// How often streams that wait for time to pass are checked.
constexpr auto kLookAgain = 250ms;

// A stream that another program moves away this often within the window is left to that program.
constexpr auto kFightWindow = 10s;
constexpr int kMovesOfAFight = 20;

/// Whether a stream plays into a device although the tap that it was sent into can receive it. A tap's node
/// has no ports until the session manager has set it up.
bool playsElsewhere(const GraphIndex& index, GlobalID stream, std::optional<GlobalID> tap) {
  const Graph& graph = index.graph();
  if (!tap || index.portsOf(*tap, PortDirection::in, false).empty()) return false;
  return std::ranges::any_of(index.linksFrom(stream), [&](GlobalID link) {
    const auto receiver = graph.nodes.find(graph.links.at(link).inputNode);
    return receiver != graph.nodes.end() && receiver->second.kind == NodeKind::sink;
  });
}

/// Whether neither the session manager nor we have made the link. Links that outlive their creators are made
/// by hand, too, except for ours of stranded streams.
bool isMadeByHand(const Graph& graph, const Link& link) {
  if (!link.client) return true;
  const auto maker = graph.clients.find(*link.client);
  return maker != graph.clients.end() && maker->second.isKnown && !maker->second.isSoundServer;
}

/// Whether somebody has linked a tapped stream to the device where its tap is heard, as an active patchbay
/// does each time that the session manager moves the stream.
bool isHeardTwice(const GraphIndex& graph, GlobalID stream, GlobalID tap) {
  return std::ranges::any_of(graph.linksFrom(stream), [&](GlobalID id) {
    const Link& link = graph.graph().links.at(id);
    return isMadeByHand(graph.graph(), link) && graph.feeds(tap, link.inputNode);
  });
}

/// Whether another client made the link. Links that outlive their creators count as nobody's.
bool isOfSomeoneElse(const Graph& graph, const Link& link) {
  const auto maker = link.client ? graph.clients.find(*link.client) : graph.clients.end();
  return maker != graph.clients.end() && (maker->second.isSessionManager || !maker->second.isSoundServer);
}

} // namespace

void StubbornStreams::noteManagerRestart(const GraphIndex& graph) {
  for (const auto stream : graph.streams())
    orphans_.insert(graph.node(stream).serial);
}

void StubbornStreams::noteTaken(std::uint64_t serial, const std::string& tapName, GraphAlarm::Time now) {
  Taken& taken = taken_[serial];
  if (taken.tapName != tapName || now - taken.windowStart > kFightWindow)
    taken = {.windowStart = now, .tapName = tapName};
  if (++taken.count < kMovesOfAFight) return;
  immovable_.insert(serial);
  late_.erase(serial);
}

std::set<std::uint64_t> StubbornStreams::uncontrolled() const {
  std::set<std::uint64_t> serials = immovable_;
  for (const auto& [serial, late] : late_)
    serials.insert(serial);
  return serials;
}

std::optional<std::chrono::milliseconds> StubbornStreams::update(const GraphIndex& graph,
                                                                 GraphAlarm::Time now) {
  const auto isGone = [&](std::uint64_t serial) { return !graph.nodeWithSerial(serial); };
  std::erase_if(taken_, [&](const auto& entry) { return isGone(entry.first); });
  std::erase_if(orphans_, isGone);
  std::erase_if(immovable_, isGone);
  std::erase_if(stranded_, isGone);
  std::erase_if(late_, [&](const auto& entry) { return isGone(entry.first); });
  const bool areSomeOnTheWay = findImmovable(graph, now);
  if (findStranded(graph, now) || areSomeOnTheWay) return kLookAgain;
  return untilRetry(now);
}

void StubbornStreams::noteLate(std::uint64_t serial, GraphAlarm::Time now) {
  immovable_.insert(serial);
  Late& late = late_[serial];
  if (late.wait >= kLastRetry) {
    late_.erase(serial);
    return;
  }
  late.wait = late.wait == 0s ? kFirstRetry : 2 * late.wait;
  late.retryAt = now + late.wait;
}

std::optional<std::chrono::milliseconds> StubbornStreams::untilRetry(GraphAlarm::Time now) const {
  std::optional<std::chrono::milliseconds> next;
  for (const auto& [serial, late] : late_) {
    if (!immovable_.contains(serial)) continue;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(late.retryAt - now);
    next = next ? std::min(*next, left) : left;
  }
  return next;
}

bool StubbornStreams::findImmovable(const GraphIndex& graph, GraphAlarm::Time now) {
  std::map<std::uint64_t, GraphAlarm::Time> elsewhere;
  for (const auto& [serial, taken] : taken_) {
    const auto late = late_.find(serial);
    if (late != late_.end() && late->second.retryAt <= now) immovable_.erase(serial);
    if (immovable_.contains(serial)) continue;
    const GlobalID stream = graph.nodeWithSerial(serial).value();
    const auto tap = graph.nodeNamed(targetTapOf(graph.graph(), stream));
    const bool hasCome = tap && graph.feeds(stream, *tap);
    if (hasCome) late_.erase(serial);
    if (hasCome && !orphans_.contains(serial) && isHeardTwice(graph, stream, *tap)) immovable_.insert(serial);
    if (hasCome || !playsElsewhere(graph, stream, tap)) continue;
    const auto before = elsewhereSince_.find(serial);
    const auto since = before == elsewhereSince_.end() ? now : before->second;
    if (now - since >= kComesWithin)
      noteLate(serial, now);
    else
      elsewhere[serial] = since;
  }
  elsewhereSince_ = std::move(elsewhere);
  return !elsewhereSince_.empty();
}

bool StubbornStreams::findStranded(const GraphIndex& index, GraphAlarm::Time now) {
  if (orphans_.empty() && stranded_.empty()) return false;
  const Graph& graph = index.graph();
  std::set<GlobalID> linked;
  for (const auto& [id, link] : graph.links) {
    linked.insert(link.outputNode);
    const auto stream = graph.nodes.find(link.outputNode);
    if (stream == graph.nodes.end() || !isOfSomeoneElse(graph, link)) continue;
    orphans_.erase(stream->second.serial); // someone has linked it again
    stranded_.erase(stream->second.serial);
  }
  std::map<std::uint64_t, GraphAlarm::Time> unlinked;
  for (const auto& [id, node] : graph.nodes) {
    if (!orphans_.contains(node.serial) || !taken_.contains(node.serial) || linked.contains(id)) continue;
    const auto before = unlinkedSince_.find(node.serial);
    const auto since = before == unlinkedSince_.end() ? now : before->second;
    if (now - since >= quirks::kManagerLinksWithin)
      stranded_.insert(node.serial);
    else
      unlinked[node.serial] = since;
  }
  unlinkedSince_ = std::move(unlinked);
  return !unlinkedSince_.empty();
}

} // namespace sonvel::pipewire
