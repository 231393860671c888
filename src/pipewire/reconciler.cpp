#include "pipewire/reconciler.h"

#include "pipewire/graph_log.h"
#include "pipewire/plan_context.h"
#include "pipewire/server_quirks.h"

#include <algorithm>
#include <utility>

namespace sonvel::pipewire {

namespace {

using namespace std::chrono_literals;
using State = OwnObject::State;

// Wait before a refused object is requested again.
constexpr auto kRetryRefusedAfter = 500ms;

// How often it is checked whether the session manager is ready.
constexpr auto kLookAgain = 250ms;

} // namespace

Reconciler::Reconciler(const Graph& graph, GraphAlarm& alarm)
    : graph_(graph)
    , index_(graph)
    , alarm_(alarm) {}

void Reconciler::setEdits(GraphEdits* edits) {
  edits_ = edits;
  if (edits_ == nullptr) forgetServerObjects();
}

void Reconciler::forgetServerObjects() {
  isNewServer_ = true;
  managerReadyAt_.reset();
  stubborn_.clear();
  releaseServerObjects();
}

void Reconciler::releaseServerObjects() {
  tapNodes_.clear();
  links_.clear();
  filters_.clear();
  lastingLinks_.clear();
  goingLinks_.clear();
  gate_.reset();
}

bool Reconciler::isConnected(IOProcID ioProc) const {
  return isFilterConnected(index(), desired_, owned(), ioProc);
}

bool Reconciler::isRefused(IOProcID ioProc) const {
  const auto isFailed = [](const OwnObject& object) { return object.state() == State::failed; };
  const auto filter = filters_.find(ioProc);
  if (filter != filters_.end() && isFailed(*filter->second.object)) return true;
  const auto found = desired_.filters.find(ioProc);
  return found != desired_.filters.end() && std::ranges::any_of(found->second.taps, [&](AudioObjectID tap) {
           const auto node = tapNodes_.find(tap);
           return node != tapNodes_.end() && isFailed(*node->second.node);
         });
}

bool Reconciler::isPartial(AudioObjectID tap) const {
  const auto found = desired_.taps.find(tap);
  return found != desired_.taps.end() && isTapPartial(index(), found->second, stubborn_.uncontrolled());
}

/// Forgets removed objects, so that they are created again if still desired, and refused ones after a delay.
void Reconciler::forgetGoneObjects() {
  const bool alsoRefused = retryRefusedAt_ && alarm_.now() >= *retryRefusedAt_;
  if (alsoRefused) retryRefusedAt_.reset();
  bool someAreRefused = false;
  const auto isDone = [&](const OwnObject& object) {
    const auto state = object.state();
    if (state == State::failed && !alsoRefused) someAreRefused = true;
    return state == State::lost || (state == State::failed && alsoRefused);
  };
  std::erase_if(tapNodes_, [&](const auto& entry) { return isDone(*entry.second.node); });
  std::erase_if(links_, [&](const auto& entry) { return isDone(*entry.second); });
  std::erase_if(filters_, [&](const auto& entry) { return isDone(*entry.second.object); });
  std::erase_if(lastingLinks_, [](const auto& link) { return link.second->state() != State::asked; });
  std::erase_if(goingLinks_, [this](const PortPair& ports) { return !links_.contains(ports); });
  if (!someAreRefused) return;
  if (!retryRefusedAt_) retryRefusedAt_ = alarm_.now() + kRetryRefusedAfter;
  alarm_.lookAgainIn(kRetryRefusedAfter);
}

void Reconciler::reconcile() {
  forgetGoneObjects();
  if (edits_ == nullptr) return;
  if (!isSessionManagerReady()) {
    releaseServerObjects(); // the session manager removed the streams' links too: nothing plays through us
    return;
  }
  suitTapsToDevices(index(), desired_);
  if (const auto delay = stubborn_.update(index(), alarm_.now())) alarm_.lookAgainIn(*delay);
  apply(planEdits(index(), desired_, owned()));
}

bool Reconciler::isSessionManagerReady() {
  const auto now = alarm_.now();
  const bool wasNewServer = std::exchange(isNewServer_, false);
  if (!graph_.hasMetadata) {
    managerReadyAt_.reset();
    return false;
  }
  if (!managerReadyAt_) {
    managerReadyAt_ = wasNewServer ? now : now + quirks::kManagerSettles;
    if (!wasNewServer) stubborn_.noteManagerRestart(index());
  }
  if (now >= *managerReadyAt_) return true;
  alarm_.lookAgainIn(kLookAgain);
  return false;
}

void Reconciler::apply(const Plan& plan) {
  applyNodes(plan);
  applyLinks(plan);
  applyRoutings(plan);
  if (!plan.tapNodesToDestroy.empty()) schedule(); // now the filters can be removed
}

/// The server removes the links of a node that goes. Asking for that too would be refused.
void Reconciler::letLinksGo(const std::string& nodeName) {
  const auto node = index().nodeNamed(nodeName);
  const auto isOfNode = [&](GlobalID portID) {
    const auto port = graph_.ports.find(portID);
    return node && port != graph_.ports.end() && port->second.node == *node;
  };
  for (const auto& [ports, link] : links_)
    if (isOfNode(ports.output) || isOfNode(ports.input)) goingLinks_.insert(ports);
}

void Reconciler::applyNodes(const Plan& plan) {
  for (const auto tap : plan.tapNodesToDestroy) {
    logEdit("tap %u: remove its node", tap);
    letLinksGo(tapNodes_.at(tap).name);
    tapNodes_.erase(tap);
  }
  for (const auto id : plan.filtersToDestroy) {
    logEdit("IOProc %llu: remove its filter", static_cast<unsigned long long>(id));
    letLinksGo(filters_.at(id).nodeName);
    filters_.erase(id);
  }
  for (const auto id : plan.tapNodesToCreate) {
    const DesiredTap& tap = desired_.taps.at(id);
    logEdit("tap %u: node %s for a started IOProc%s", id, tap.nodeName.c_str(),
            tap.isMono ? ", mono as its device" : "");
    tapNodes_[id] = {edits_->makeTapNode(tap), tap.nodeName, tap.isMono};
  }
  for (const auto id : plan.filtersToCreate)
    createFilter(id);
}

void Reconciler::createFilter(IOProcID id) {
  const DesiredFilter& filter = desired_.filters.at(id);
  const auto number = static_cast<unsigned long long>(id);
  if (const auto muted = mutedTapOf(desired_, filter)) {
    const auto tap = tapNodes_.find(*muted);
    if (tap == tapNodes_.end()) return; // its node is replaced
    logEdit("IOProc %llu: runs in node %s, to %s", number, tap->second.name.c_str(),
            filter.deviceName.c_str());
    filters_[id] = {tap->second.node->run(blocks_.at(id)), ""};
  } else {
    logEdit("IOProc %llu: filter %s to %s", number, filter.nodeName.c_str(), filter.deviceName.c_str());
    filters_[id] = {edits_->makeFilter(filter, blocks_.at(id)), filter.nodeName};
  }
}

void Reconciler::applyLinks(const Plan& plan) {
  for (const auto& pair : plan.linksToDestroy) {
    if (goingLinks_.contains(pair)) continue;
    logEdit("link %u to %u: no longer needed", pair.output, pair.input);
    links_.erase(pair);
  }
  for (const auto& pair : plan.linksToCreate) {
    logEdit("link %u to %u: a filter needs it", pair.output, pair.input);
    links_[pair] = edits_->makeLink(pair, LinkKind::passing);
  }
  for (const auto& pair : plan.strandedLinksToCreate) {
    logEdit("link %u to %u: the session manager leaves a tapped stream unlinked", pair.output, pair.input);
    links_[pair] = edits_->makeLink(pair, LinkKind::feeding);
  }
  for (const auto& pair : plan.lastingLinksToCreate) {
    if (lastingLinks_.contains(pair)) continue;
    logEdit("link %u to %u: the session manager leaves a stream that was tapped unlinked", pair.output,
            pair.input);
    lastingLinks_[pair] = edits_->makeLink(pair, LinkKind::lasting);
  }
  for (const auto link : plan.linksToCut) {
    logEdit("link %u: cut, it plays a tapped stream past its tap", link);
    edits_->cutLink(link);
  }
}

bool Reconciler::playsNow(GlobalID stream) const {
  return graph_.nodes.at(stream).isRunning && index().feedsAnything(stream);
}

void Reconciler::applyRoutings(const Plan& plan) {
  std::vector<StreamRouting> playing;
  for (const auto& routing : plan.routings)
    if (!filters_.empty() && playsNow(routing.stream))
      playing.push_back(routing);
    else
      route(routing);
  if (playing.empty()) {
    gate_.reset();
  } else if (gate_.isOpen(cycles(), alarm_.now())) {
    gate_.reset();
    for (const auto& routing : playing)
      route(routing);
  } else {
    alarm_.lookAgainIn(CycleGate::kPoll);
  }
}

void Reconciler::route(const StreamRouting& routing) {
  const bool goesIntoTap = !routing.tapName.empty();
  logEdit("stream %u: %s%s", routing.stream, goesIntoTap ? "into " : "back to where its user had it",
          routing.tapName.c_str());
  const auto writes =
      goesIntoTap ? writesInto(index(), routing.stream, routing.tapName) : writesBack(graph_, routing.stream);
  for (const auto& write : writes)
    edits_->write(routing.stream, write);
  if (goesIntoTap) stubborn_.noteTaken(graph_.nodes.at(routing.stream).serial, routing.tapName, alarm_.now());
}

std::uint32_t Reconciler::cycles() const {
  std::uint32_t sum = 0;
  for (const auto& [id, tap] : tapNodes_)
    sum += tap.node->cycles();
  for (const auto& [id, filter] : filters_)
    sum += filter.object->cycles();
  return sum;
}

} // namespace sonvel::pipewire
