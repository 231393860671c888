#include "pipewire/hardware_state.h"

#include "pipewire/hardware_properties.h"
#include "pipewire/process_facts.h"

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace sonvel::pipewire {

namespace {

using namespace std::chrono_literals;

// The contract allows two seconds; the rest is for the work after the wait.
constexpr auto kLongestWait = 1900ms;

// How long a call waits for something besides the server's answer, such as a device that opens or a stream
// that moves. A rebuild has two such calls, and shall hold up the others for 250 ms at most.
constexpr auto kShortWait = 100ms;

// A server with slower answers is busy, and gets more time for everything.
constexpr auto kQuickAnswer = 20ms;

} // namespace

LoopThread::Deadline deadlineFromNow() {
  return LoopThread::SteadyClock::now() + kLongestWait;
}

PipeWireHardware::State::State(const ApplicationIdentity& appIdentity)
    : identity(appIdentity)
    , alarm(loop.loop(), [this] { look(); })
    , reconciler(graph, alarm)
    , joining(appIdentity)
    , processes(ids)
    , devices(ids)
    , runName(std::to_string(getpid()) + "-" +
              std::to_string(LoopThread::SteadyClock::now().time_since_epoch().count()) + "-")
    , guardian(kTapNamePrefix + runName) {
  loop.start();
  const LoopThread::Lock lock(loop);
  server = std::make_unique<ServerConnection>(
      loop, graph, serverState,
      ServerConnection::Listener{.changed = [this] { reconciler.schedule(); },
                                 .lost = [this] { reconciler.forgetServerObjects(); },
                                 .mayRest = [this] { return reconciler.desired().taps.empty(); },
                                 .granted =
                                     [this] {
                                       if (!reconciler.desired().taps.empty()) ensureGuardian();
                                     },
                                 .withdrawn = [this] { guardian.begin(); }});
  edits = std::make_unique<ServerEdits>(*server, [this] { reconciler.schedule(); });
  reconciler.setEdits(edits.get());
  lock.waitUntil(deadlineFromNow(), [this] { return server->isReady() || server->core() == nullptr; });
}

PipeWireHardware::State::~State() {
  giveAllBack();
  loop.stop(); // no callbacks after this
}

/// Called after each change, on the loop thread.
void PipeWireHardware::State::look() {
  if (server && server->isReady() && server->mayHaveTaps()) {
    joining.join(index(), reconciler.desired());
    reconciler.reconcile();
    forgetRetired();
  }
  if (reconciler.desired().taps.empty()) guardian.rest();
  callListeners();
  loop.signal();
}

/// What a configuration has destroyed is kept until it has left the graph.
void PipeWireHardware::State::forgetRetired() {
  DesiredState& desired = reconciler.desired();
  std::erase_if(desired.taps, [this](const auto& tap) {
    return tap.second.isRetired && tap.second.isLeaving && !reconciler.hasTapNode(tap.first);
  });
}

void PipeWireHardware::State::callListeners() {
  if (listeners.isEmpty()) return;
  const bool isReady = server && server->isReady();
  if (!isReady && wasReady_) listeners.forgetValues();
  wasReady_ = isReady;
  if (!isReady) return;
  listeners.callChanged([this](AudioObjectID object, const PropertyAddress& address) {
    return PropertyReader(*this, object, address).anyValue();
  });
}

void PipeWireHardware::State::ensureGuardian() {
  server->checkRights();
  guardian.watch();
}

void PipeWireHardware::State::giveAllBack() {
  const LoopThread::Lock lock(loop);
  const auto deadline = deadlineFromNow();
  for (auto& [id, filter] : reconciler.desired().filters)
    filter.isStopping = true;
  for (auto& [id, tap] : reconciler.desired().taps)
    tap.isLeaving = true;
  reconciler.schedule();
  const OSStatus released = waitFor(lock, deadline, [this] { return reconciler.ownsNothing(); });
  const bool isConfirmed = syncWithServer(lock, deadline) == kNoError;
  if (released == kNoError && isConfirmed) guardian.dismiss();
  reconciler.setEdits(nullptr);
  edits.reset();
  server.reset();
}

OSStatus PipeWireHardware::State::syncWithServer(const LoopThread::Lock& lock,
                                                 LoopThread::Deadline deadline) {
  if (!server->isReady()) return status::kNotRunning;
  if (server->roundTrip(lock, deadline)) return kNoError;
  return server->isReady() ? status::kUnspecified : status::kNotRunning;
}

OSStatus PipeWireHardware::State::waitFor(const LoopThread::Lock& lock, LoopThread::Deadline deadline,
                                          const std::function<bool()>& isTrue) {
  bool isDone = false;
  lock.waitUntil(deadline, [&] { return (isDone = isTrue()) || !server->isReady(); });
  if (isDone) return kNoError;
  return server->isReady() ? status::kUnspecified : status::kNotRunning;
}

OSStatus PipeWireHardware::State::waitShortly(const LoopThread::Lock& lock,
                                              const std::function<bool()>& isTrue) {
  const auto deadline = deadlineFromNow();
  while (true) {
    const auto turn = std::min(LoopThread::SteadyClock::now() + kShortWait, deadline);
    if (const OSStatus outcome = waitFor(lock, turn, isTrue); outcome != status::kUnspecified) return outcome;
    const auto asked = LoopThread::SteadyClock::now();
    if (const OSStatus outcome = syncWithServer(lock, deadline); outcome != kNoError) return outcome;
    if (isTrue()) return kNoError;
    const auto answered = LoopThread::SteadyClock::now();
    if (answered - asked <= kQuickAnswer || answered >= deadline) return status::kUnspecified;
  }
}

OSStatus PipeWireHardware::State::stop(const LoopThread::Lock& lock, const std::set<IOProcID>& ioProcs) {
  auto& filters = reconciler.desired().filters;
  for (const auto ioProc : ioProcs)
    if (const auto filter = filters.find(ioProc); filter != filters.end())
      (isConfiguring ? filter->second.isRetired : filter->second.isStopping) = true;
  if (isConfiguring) return kNoError;
  reconciler.schedule();
  const auto haveGone = [&] {
    return std::ranges::none_of(ioProcs, [&](IOProcID ioProc) { return reconciler.hasFilter(ioProc); });
  };
  OSStatus outcome = waitShortly(lock, haveGone);
  if (outcome == status::kUnspecified) {
    // The streams have their new targets; removing the tap's node makes them leave.
    for (const auto ioProc : ioProcs)
      if (const auto filter = filters.find(ioProc); filter != filters.end()) filter->second.isOverdue = true;
    reconciler.schedule();
    outcome = waitFor(lock, deadlineFromNow(), haveGone);
  }
  if (outcome == status::kUnspecified) return outcome;
  for (const auto ioProc : ioProcs) { // if the server is gone, they are gone too
    filters.erase(ioProc);
    reconciler.dropBlock(ioProc);
  }
  return kNoError;
}

OSStatus PipeWireHardware::State::commit(const LoopThread::Lock& lock) {
  isConfiguring = false;
  std::set<IOProcID> retired;
  for (auto& [id, filter] : reconciler.desired().filters) {
    filter.isHeld = false;
    if (filter.isRetired) retired.insert(id);
  }
  for (auto& [id, tap] : reconciler.desired().taps)
    tap.isLeaving |= tap.isRetired;
  reconciler.schedule();
  return retired.empty() ? kNoError : stop(lock, retired);
}

DesiredTap* PipeWireHardware::State::tap(AudioObjectID object) {
  auto& taps = reconciler.desired().taps;
  const auto found = taps.find(object);
  return found == taps.end() || found->second.isRetired ? nullptr : &found->second;
}

std::optional<GlobalID> PipeWireHardware::State::deviceNode(AudioObjectID device) const {
  const std::string* name = devices.nameOf(device);
  const auto node = name == nullptr ? std::nullopt : index().nodeNamed(*name);
  if (!node) return std::nullopt;
  const auto kind = graph.nodes.at(*node).kind;
  return kind == NodeKind::sink || kind == NodeKind::source ? node : std::nullopt;
}

std::vector<AudioObjectID> PipeWireHardware::State::processObjects() {
  std::map<std::uint64_t, const ProcessKey*> bySerial; // in order of arrival
  for (const auto stream : index().streams())
    if (const ProcessKey* process = index().processOf(stream))
      bySerial[graph.nodes.at(stream).serial] = process;
  std::vector<AudioObjectID> objects;
  std::set<AudioObjectID> listed;
  for (const auto& [serial, process] : bySerial)
    if (const auto id = processes.idOf(*process); listed.insert(id).second) objects.push_back(id);
  return objects;
}

std::vector<AudioObjectID> PipeWireHardware::State::deviceObjects() {
  std::map<std::uint64_t, std::string> bySerial;
  for (const auto& [id, node] : graph.nodes)
    if (node.kind == NodeKind::sink || node.kind == NodeKind::source) bySerial[node.serial] = node.name;
  std::vector<AudioObjectID> objects;
  objects.reserve(bySerial.size() + aggregates.size());
  for (const auto& [serial, name] : bySerial)
    objects.push_back(devices.idOf(name));
  for (const auto& [id, aggregate] : aggregates)
    objects.push_back(id);
  return objects;
}

const AudioClient* PipeWireHardware::State::clientOf(AudioObjectID process) const {
  const ProcessKey* key = processes.nameOf(process);
  return key == nullptr ? nullptr : pipewire::clientOf(index(), *key);
}

OSStatus PipeWireHardware::State::statusOfNoAggregate(AudioObjectID object) const {
  return deviceNode(object) ? status::kBadDevice : status::kBadObject;
}

} // namespace sonvel::pipewire
