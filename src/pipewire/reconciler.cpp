#include "pipewire/reconciler.h"

#include "pipewire/stream_targets.h"

#include <algorithm>
#include <utility>

namespace sonvel::pipewire {

namespace {

using namespace std::chrono_literals;

constexpr auto kRetryFailedAfter = 500ms;

// What a session manager needs for its devices after it has shown itself.
constexpr auto kManagerSettles = 1s;

// The session manager links a stream within milliseconds; one that waits so long waits in vain.
constexpr auto kStrandedAfter = 1s;

// The real-time thread must not wake anyone, so the end of a cycle is polled for, for as long as a hand-over
// waits.
constexpr auto kCyclePoll = 1ms;

// A device that sleeps has no cycles, and then there is nothing to be heard that could have a gap.
constexpr auto kLongestCycle = 200ms;

ObjectProperties tapNodeProperties(const DesiredTap& tap) {
  return {{"factory.name", "support.null-audio-sink"},
          {PW_KEY_MEDIA_CLASS, "Audio/Sink/Internal"}, // no mixer lists it and it never becomes the default
          {PW_KEY_NODE_NAME, tap.nodeName},
          {PW_KEY_NODE_DESCRIPTION, tap.description},
          {PW_KEY_APP_NAME, "Sonvel"},
          {PW_KEY_OBJECT_LINGER, "false"},
          {PW_KEY_NODE_VIRTUAL, "true"},
          {"audio.position", "[ FL FR ]"},
          {"monitor.passthrough", "true"},
          {"monitor.channel-volumes", "false"},
          {PW_KEY_PRIORITY_SESSION, "-1"},
          {PW_KEY_PRIORITY_DRIVER, "0"},
          {"state.restore-props", "false"},
          {"state.restore-target", "false"}};
}

template <class Map> auto keysOf(const Map& map) {
  std::set<typename Map::key_type> keys;
  for (const auto& entry : map)
    keys.insert(entry.first);
  return keys;
}

} // namespace

Reconciler::Reconciler(LoopThread& loop, const Graph& graph)
    : loop_(loop)
    , graph_(graph)
    , due_(loop.loop(), [this] { reconcile(); })
    , cycleWatch_(loop.loop(), [this] { watchForCycleEnd(); })
    , retry_(loop.loop(), [this] {
      purge(true);
      reconcile();
    }) {}

void Reconciler::setServer(ServerConnection* server) {
  server_ = server;
  if (server_ == nullptr) forgetServerObjects();
}

void Reconciler::forgetServerObjects() {
  isNewServer_ = true;
  managerReadyAt_.reset();
  moved_.clear();
  unlinkedSince_.clear();
  stranded_.clear();
  releaseServerObjects();
}

void Reconciler::releaseServerObjects() {
  tapNodes_.clear();
  links_.clear();
  filters_.clear();
  captured_.clear();
  lastingLinks_.clear();
}

bool Reconciler::isEngaged(IOProcID session) const {
  return isSessionEngaged(graph_, desired_, owned(), session);
}

std::optional<RemoteObject::State> Reconciler::tapNodeState(AudioObjectID tap) const {
  const auto node = tapNodes_.find(tap);
  return node == tapNodes_.end() ? std::nullopt : std::optional(node->second->state());
}

OwnedObjects Reconciler::owned() const {
  OwnedObjects owned{.tapNodes = keysOf(tapNodes_),
                     .filters = keysOf(filters_),
                     .links = {},
                     .captured = captured_,
                     .stranded = stranded_};
  for (const auto& [pair, link] : links_)
    owned.links.emplace(pair, link->isNegotiated());
  return owned;
}

/// Forgets what the server has removed, so that it is made again if it is still wanted. What the server
/// refused stays a while, or we would ask in a circle.
void Reconciler::purge(bool alsoFailed) {
  bool anyFailed = false;
  const auto isDone = [&](const auto& entry) {
    const auto state = entry.second->state();
    anyFailed |= state == RemoteObject::State::failed && !alsoFailed;
    return state == RemoteObject::State::lost || (alsoFailed && state == RemoteObject::State::failed);
  };
  std::erase_if(tapNodes_, isDone);
  std::erase_if(links_, isDone);
  std::erase_if(lastingLinks_,
                [](const auto& link) { return link.second->state() != RemoteObject::State::asked; });
  std::erase_if(filters_, [&](const auto& entry) {
    anyFailed |= entry.second->isBroken() && !alsoFailed;
    return entry.second->isBroken() && alsoFailed;
  });
  if (anyFailed) retry_.armOnce(kRetryFailedAfter);
}

void Reconciler::reconcile() {
  purge(false);
  if (server_ != nullptr && server_->isReady() && server_->mayHaveTaps()) {
    if (isSessionManagerReady()) {
      lookForStrandedStreams();
      apply(planEdits(graph_, desired_, owned()));
    } else {
      // The session manager took the streams' links with it: nobody is heard through us.
      releaseServerObjects();
    }
  }
  loop_.signal();
}

bool Reconciler::isSessionManagerReady() {
  const auto now = LoopThread::SteadyClock::now();
  const bool wasNewServer = std::exchange(isNewServer_, false);
  if (!graph_.hasMetadata) {
    managerReadyAt_.reset();
    return false;
  }
  if (!managerReadyAt_) managerReadyAt_ = wasNewServer ? now : now + kManagerSettles;
  if (now >= *managerReadyAt_) return true;
  retry_.armOnce(kRetryFailedAfter);
  return false;
}

void Reconciler::lookForStrandedStreams() {
  std::set<std::uint64_t> present;
  std::set<std::uint64_t> unlinked;
  for (const auto& [id, node] : graph_.nodes) {
    present.insert(node.serial);
    if (moved_.contains(node.serial) && !feedsAnything(graph_, id)) unlinked.insert(node.serial);
  }
  std::erase_if(moved_, [&](std::uint64_t serial) { return !present.contains(serial); });
  std::erase_if(stranded_, [&](std::uint64_t serial) { return !present.contains(serial); });
  for (const auto& [id, link] : graph_.links) // somebody else does it again
    if (const auto node = graph_.nodes.find(link.outputNode);
        node != graph_.nodes.end() && !links_.contains({link.outputPort, link.inputPort}))
      stranded_.erase(node->second.serial);
  const auto now = LoopThread::SteadyClock::now();
  std::erase_if(unlinkedSince_, [&](const auto& entry) { return !unlinked.contains(entry.first); });
  bool someWait = false;
  for (const auto serial : unlinked) {
    const auto since = unlinkedSince_.try_emplace(serial, now).first->second;
    if (now - since >= kStrandedAfter) stranded_.insert(serial);
    someWait |= !stranded_.contains(serial);
  }
  if (someWait) retry_.armOnce(kRetryFailedAfter);
}

void Reconciler::apply(const Plan& plan) {
  applyNodes(plan);
  applyLinks(plan);
  applyRoutings(plan);
  if (!plan.tapNodesToDestroy.empty()) schedule(); // now the filters can go
}

void Reconciler::applyNodes(const Plan& plan) {
  pw_core* core = server_->core();
  const auto changed = [this] { schedule(); };
  for (const auto tap : plan.tapNodesToDestroy)
    tapNodes_.erase(tap);
  for (const auto session : plan.filtersToDestroy)
    filters_.erase(session);
  for (const auto tap : plan.tapNodesToCreate)
    tapNodes_[tap] = std::make_unique<RemoteObject>(core, "adapter", PW_TYPE_INTERFACE_Node, PW_VERSION_NODE,
                                                    tapNodeProperties(desired_.taps.at(tap)), changed);
  for (const auto id : plan.filtersToCreate) {
    const DesiredSession& session = desired_.sessions.at(id);
    filters_[id] =
        std::make_unique<IOFilter>(core, session.filterName, session.description, blocks_.at(id), changed);
  }
}

std::unique_ptr<RemoteLink> Reconciler::makeLink(const PortPair& pair, LinkKind kind) {
  return std::make_unique<RemoteLink>(server_->core(), pair.output, pair.input, kind, [this] { schedule(); });
}

void Reconciler::applyLinks(const Plan& plan) {
  for (const auto& pair : plan.linksToDestroy)
    links_.erase(pair);
  for (const auto& pair : plan.linksToCreate)
    links_[pair] = makeLink(pair, LinkKind::passing);
  for (const auto& pair : plan.strandedLinksToCreate)
    links_[pair] = makeLink(pair, LinkKind::feeding);
  for (const auto& pair : plan.lastingLinksToCreate)
    if (!lastingLinks_.contains(pair)) lastingLinks_[pair] = makeLink(pair, LinkKind::lasting);
  for (const auto link : plan.foreignLinksToCut)
    server_->monitor()->destroy(link);
}

void Reconciler::applyRoutings(const Plan& plan) {
  if (server_->monitor()->metadata() == nullptr) return;
  bool someWait = false;
  for (const auto& routing : plan.routings) {
    const bool plays =
        graph_.nodes.at(routing.stream).isRunning && std::ranges::any_of(graph_.links, [&](const auto& link) {
          return link.second.outputNode == routing.stream;
        });
    if (plays && !isBetweenCycles_ && !filters_.empty())
      someWait = true;
    else
      route(routing);
  }
  if (!someWait || isWatching_) return;
  isWatching_ = true;
  cyclesSeen_ = cycles();
  watchEnds_ = LoopThread::SteadyClock::now() + kLongestCycle;
  cycleWatch_.arm(kCyclePoll);
}

void Reconciler::watchForCycleEnd() {
  if (cycles() == cyclesSeen_ && LoopThread::SteadyClock::now() < watchEnds_) {
    cycleWatch_.arm(kCyclePoll);
    return;
  }
  isWatching_ = false;
  isBetweenCycles_ = true;
  reconcile();
  isBetweenCycles_ = false;
}

void Reconciler::route(const StreamRouting& routing) {
  const auto writes = routing.tapName.empty() ? writesBack(graph_, routing.stream)
                                              : writesInto(graph_, routing.stream, routing.tapName);
  for (const auto& write : writes)
    server_->monitor()->write(routing.stream, write);
  const auto serial = graph_.nodes.at(routing.stream).serial;
  for (auto& [tapName, streams] : captured_)
    streams.erase(serial);
  moved_.insert(serial);
  if (!routing.tapName.empty()) captured_[routing.tapName].insert(serial);
}

std::uint32_t Reconciler::cycles() const {
  std::uint32_t sum = 0;
  for (const auto& [id, filter] : filters_)
    sum += filter->cycles();
  return sum;
}

} // namespace sonvel::pipewire
