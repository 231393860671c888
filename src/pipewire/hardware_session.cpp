#include "pipewire/hardware_session.h"

#include <algorithm>
#include <unistd.h>

namespace sonvel::pipewire {

namespace {

// Contract: two seconds. The rest is for what comes after the wait.
constexpr std::chrono::milliseconds kLongestWait{1900};

} // namespace

LoopThread::Deadline deadlineFromNow() {
  return LoopThread::SteadyClock::now() + kLongestWait;
}

PipeWireHardware::Session::Session(const ApplicationIdentity& appIdentity)
    : identity(appIdentity)
    , reconciler(loop, graph)
    , processes(ids)
    , devices(ids)
    , runName(std::to_string(getpid()) + "-" +
              std::to_string(LoopThread::SteadyClock::now().time_since_epoch().count()) + "-") {
  loop.start();
  const LoopThread::Lock lock(loop);
  server = std::make_unique<ServerConnection>(
      loop, graph, state,
      ServerConnection::Listener{.changed = [this] { reconciler.schedule(); },
                                 .lost = [this] { reconciler.forgetServerObjects(); },
                                 .mayRest = [this] { return reconciler.desired().taps.empty(); },
                                 .granted =
                                     [this] {
                                       if (!reconciler.desired().taps.empty()) ensureGuardian();
                                     },
                                 .withdrawn =
                                     [this] {
                                       if (guardian) guardian->begin();
                                     }});
  reconciler.setServer(server.get());
  lock.waitUntil(deadlineFromNow(), [this] { return server->isReady() || server->core() == nullptr; });
}

PipeWireHardware::Session::~Session() {
  giveAllBack();
  loop.stop(); // from here on nothing is called back
}

void PipeWireHardware::Session::ensureGuardian() {
  server->checkRights();
  if (!guardian || guardian->hasBegun()) guardian = std::make_unique<Guardian>(kTapNamePrefix + runName);
}

void PipeWireHardware::Session::giveAllBack() {
  const LoopThread::Lock lock(loop);
  const auto deadline = deadlineFromNow();
  for (auto& [id, session] : reconciler.desired().sessions)
    session.isStopping = true;
  for (auto& [id, tap] : reconciler.desired().taps)
    tap.isLeaving = true;
  reconciler.schedule();
  const OSStatus released = waitFor(lock, deadline, [this] { return reconciler.ownsNothing(); });
  const bool isConfirmed = syncWithServer(lock, deadline) == kNoError;
  if (guardian && released == kNoError && isConfirmed) guardian->dismiss();
  reconciler.setServer(nullptr);
  server.reset();
}

OSStatus PipeWireHardware::Session::syncWithServer(const LoopThread::Lock& lock,
                                                   LoopThread::Deadline deadline) {
  if (!server->isReady()) return status::kNotRunning;
  if (server->roundTrip(lock, deadline)) return kNoError;
  return server->isReady() ? status::kUnspecified : status::kNotRunning;
}

OSStatus PipeWireHardware::Session::waitFor(const LoopThread::Lock& lock, LoopThread::Deadline deadline,
                                            const std::function<bool()>& isTrue) {
  bool isDone = false;
  lock.waitUntil(deadline, [&] { return (isDone = isTrue()) || !server->isReady(); });
  if (isDone) return kNoError;
  return server->isReady() ? status::kUnspecified : status::kNotRunning;
}

OSStatus PipeWireHardware::Session::stop(const LoopThread::Lock& lock, LoopThread::Deadline deadline,
                                         IOProcID ioProc) {
  DesiredState& desired = reconciler.desired();
  const auto session = desired.sessions.find(ioProc);
  if (session == desired.sessions.end()) return kNoError;
  session->second.isStopping = true;
  for (const auto tap : session->second.taps) {
    const bool isStillRead = std::ranges::any_of(desired.sessions, [&](const auto& other) {
      return !other.second.isStopping && other.second.taps.contains(tap);
    });
    if (const auto found = desired.taps.find(tap); found != desired.taps.end() && !isStillRead)
      found->second.hasNode = false;
  }
  reconciler.schedule();
  const OSStatus outcome = waitFor(lock, deadline, [&] { return !reconciler.hasFilter(ioProc); });
  if (outcome == status::kUnspecified) return outcome;
  desired.sessions.erase(ioProc); // a server that has gone has lost it
  reconciler.dropBlock(ioProc);
  return kNoError;
}

std::optional<GlobalID> PipeWireHardware::Session::deviceNode(AudioObjectID device) const {
  const auto name = devices.nameOf(device);
  const auto node = name ? graph.nodeNamed(*name) : std::nullopt;
  if (!node) return std::nullopt;
  const auto kind = graph.nodes.at(*node).kind;
  return kind == NodeKind::sink || kind == NodeKind::source ? node : std::nullopt;
}

std::vector<AudioObjectID> PipeWireHardware::Session::processObjects() {
  std::map<std::uint64_t, ProcessKey> bySerial; // in the order of arrival
  for (const auto& [id, node] : graph.nodes)
    if (const auto process = processKeyOfStream(graph, node)) bySerial[node.serial] = *process;
  std::vector<AudioObjectID> objects;
  for (const auto& [serial, process] : bySerial)
    if (const auto id = processes.idOf(process); std::ranges::find(objects, id) == objects.end())
      objects.push_back(id);
  return objects;
}

std::vector<AudioObjectID> PipeWireHardware::Session::deviceObjects() {
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

const AudioClient* PipeWireHardware::Session::clientOf(AudioObjectID process) const {
  const auto key = processes.nameOf(process);
  if (!key) return nullptr;
  const auto client = std::ranges::find_if(
      graph.clients, [&](const auto& entry) { return processKeyOf(graph, entry.first) == key; });
  return client == graph.clients.end() ? nullptr : &client->second.facts;
}

bool PipeWireHardware::Session::isRunningOutput(AudioObjectID process) const {
  const auto key = processes.nameOf(process);
  return key && std::ranges::any_of(graph.nodes, [&](const auto& entry) {
           return entry.second.isRunning && processKeyOfStream(graph, entry.second) == key;
         });
}

OSStatus PipeWireHardware::Session::statusOfNoAggregate(AudioObjectID object) const {
  return deviceNode(object) ? status::kBadDevice : status::kBadObject;
}

} // namespace sonvel::pipewire
