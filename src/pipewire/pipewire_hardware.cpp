#include "pipewire/pipewire_hardware.h"

#include "pipewire/hardware_session.h"

#include <algorithm>

namespace sonvel::pipewire {

namespace {

using Lock = LoopThread::Lock;

} // namespace

PipeWireHardware::PipeWireHardware(const ApplicationIdentity& identity)
    : session_(std::make_unique<Session>(identity)) {}

PipeWireHardware::~PipeWireHardware() = default;

OSStatus PipeWireHardware::createProcessTap(const TapDescription& description, AudioObjectID& tap) {
  const Lock lock(session_->loop);
  const auto deadline = deadlineFromNow();
  if (!session_->server->isReady()) return status::kNotRunning;
  if (!session_->server->mayHaveTaps()) return status::kIllegalOperation;
  DesiredTap desired{.nodeName = session_->uniqueName(kTapNamePrefix),
                     .description = description.name,
                     .processes = {},
                     .isMuted = description.muteBehavior == TapMuteBehavior::muted,
                     .hasNode = description.muteBehavior == TapMuteBehavior::muted};
  for (const auto object : description.processes) {
    const auto process = session_->processes.nameOf(object);
    if (!process) return status::kBadObject;
    desired.processes.insert(*process);
  }
  if (desired.hasNode) session_->ensureGuardian();
  const AudioObjectID id = session_->ids.next();
  auto& taps = session_->reconciler.desired().taps;
  const bool hasNode = desired.hasNode;
  taps.emplace(id, std::move(desired));
  session_->reconciler.schedule();
  OSStatus outcome = session_->syncWithServer(lock, deadline);
  if (outcome == kNoError && hasNode)
    outcome = session_->waitFor(lock, deadline, [&] {
      const auto state = session_->reconciler.tapNodeState(id);
      return state && *state != RemoteObject::State::asked;
    });
  if (outcome == kNoError && hasNode && session_->reconciler.tapNodeState(id) != RemoteObject::State::bound)
    outcome = status::kIllegalOperation; // the server would not make it
  if (outcome != kNoError) {
    taps.erase(id);
    session_->reconciler.schedule();
    return outcome;
  }
  tap = id;
  return kNoError;
}

OSStatus PipeWireHardware::destroyProcessTap(AudioObjectID tap) {
  const Lock lock(session_->loop);
  const auto desired = session_->reconciler.desired().taps.find(tap);
  if (desired == session_->reconciler.desired().taps.end()) return status::kBadObject;
  desired->second.isLeaving = true;
  session_->reconciler.schedule();
  const OSStatus outcome = session_->waitFor(
      lock, deadlineFromNow(), [&] { return !session_->reconciler.tapNodeState(tap).has_value(); });
  if (outcome == status::kUnspecified) return outcome;
  session_->reconciler.desired().taps.erase(tap); // a server that has gone has lost it
  return kNoError;
}

OSStatus PipeWireHardware::createAggregateDevice(const AggregateDeviceDescription& description,
                                                 AudioObjectID& device) {
  const Lock lock(session_->loop);
  if (!session_->server->isReady()) return status::kNotRunning;
  const auto isKnown = [&](const SubDevice& sub) {
    const auto node = session_->graph.nodeNamed(sub.uid);
    return node && session_->graph.nodes.at(*node).kind == NodeKind::sink;
  };
  if (description.subDevices.empty() || !std::ranges::all_of(description.subDevices, isKnown))
    return status::kBadDevice;
  Session::Aggregate aggregate{.description = description, .taps = {}, .ioProcs = {}};
  for (const auto& sub : description.taps) {
    const auto& taps = session_->reconciler.desired().taps;
    const auto found =
        std::ranges::find_if(taps, [&](const auto& tap) { return tap.second.nodeName == sub.uid; });
    if (found == taps.end()) return status::kBadObject;
    aggregate.taps.insert(found->first);
  }
  device = session_->ids.next();
  session_->aggregates.emplace(device, std::move(aggregate));
  return kNoError;
}

OSStatus PipeWireHardware::destroyAggregateDevice(AudioObjectID device) {
  const Lock lock(session_->loop);
  const auto aggregate = session_->aggregates.find(device);
  if (aggregate == session_->aggregates.end()) return session_->statusOfNoAggregate(device);
  const auto deadline = deadlineFromNow();
  const std::map<IOProcID, IOProcBlock> installed = aggregate->second.ioProcs;
  for (const auto& [ioProc, block] : installed)
    if (const OSStatus outcome = session_->stop(lock, deadline, ioProc); outcome != kNoError) return outcome;
  session_->aggregates.erase(device);
  return kNoError;
}

OSStatus PipeWireHardware::createIOProcID(AudioObjectID device, const IOQueue& /*queue*/, IOProcBlock block,
                                          IOProcID& ioProc) {
  // Every filter of this process runs on the library's one real-time thread, so any queue is served in order.
  const Lock lock(session_->loop);
  const auto aggregate = session_->aggregates.find(device);
  if (aggregate == session_->aggregates.end()) return session_->statusOfNoAggregate(device);
  if (!block) return status::kIllegalOperation;
  ioProc = ++session_->lastIOProc;
  aggregate->second.ioProcs.emplace(ioProc, std::move(block));
  return kNoError;
}

OSStatus PipeWireHardware::destroyIOProcID(AudioObjectID device, IOProcID ioProc) {
  const Lock lock(session_->loop);
  const auto aggregate = session_->aggregates.find(device);
  if (aggregate == session_->aggregates.end()) return session_->statusOfNoAggregate(device);
  if (!aggregate->second.ioProcs.contains(ioProc)) return status::kBadObject;
  if (const OSStatus outcome = session_->stop(lock, deadlineFromNow(), ioProc); outcome != kNoError)
    return outcome;
  // Others may have called while this one waited.
  if (const auto left = session_->aggregates.find(device); left != session_->aggregates.end())
    left->second.ioProcs.erase(ioProc);
  return kNoError;
}

OSStatus PipeWireHardware::deviceStart(AudioObjectID device, IOProcID ioProc) {
  const Lock lock(session_->loop);
  const auto aggregate = session_->aggregates.find(device);
  if (aggregate == session_->aggregates.end()) return session_->statusOfNoAggregate(device);
  const auto installed = aggregate->second.ioProcs.find(ioProc);
  if (installed == aggregate->second.ioProcs.end()) return status::kBadObject;
  if (!session_->server->isReady()) return status::kNotRunning;
  if (!session_->server->mayHaveTaps()) return status::kIllegalOperation;
  DesiredState& desired = session_->reconciler.desired();
  if (const auto running = desired.sessions.find(ioProc); running != desired.sessions.end())
    return running->second.isStopping ? status::kIllegalOperation : kNoError;
  for (const auto tap : aggregate->second.taps)
    if (const auto found = desired.taps.find(tap); found != desired.taps.end())
      found->second.hasNode = found->second.isMuted;
  session_->reconciler.setBlock(ioProc, installed->second);
  const AggregateDeviceDescription& description = aggregate->second.description;
  desired.sessions[ioProc] = {.filterName = session_->uniqueName("sonvel-aggregate-"),
                              .description = description.name,
                              .deviceName = description.subDevices.front().uid,
                              .taps = aggregate->second.taps};
  session_->reconciler.schedule();
  return session_->waitFor(lock, deadlineFromNow(), [&] { return session_->reconciler.isEngaged(ioProc); });
}

OSStatus PipeWireHardware::deviceStop(AudioObjectID device, IOProcID ioProc) {
  const Lock lock(session_->loop);
  const auto aggregate = session_->aggregates.find(device);
  if (aggregate == session_->aggregates.end()) return session_->statusOfNoAggregate(device);
  if (!aggregate->second.ioProcs.contains(ioProc)) return status::kBadObject;
  return session_->stop(lock, deadlineFromNow(), ioProc);
}

std::vector<AudioClient> PipeWireHardware::audioClients() const {
  const Lock lock(session_->loop);
  std::map<std::uint64_t, AudioClient> bySerial; // in the order of arrival
  for (const auto& [id, client] : session_->graph.clients)
    if (processKeyOf(session_->graph, id)) bySerial[client.serial] = client.facts;
  std::vector<AudioClient> clients;
  clients.reserve(bySerial.size());
  for (auto& [serial, client] : bySerial)
    clients.push_back(std::move(client));
  return clients;
}

AudioServer& PipeWireHardware::server() noexcept {
  return session_->state;
}

} // namespace sonvel::pipewire
