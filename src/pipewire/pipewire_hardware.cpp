#include "pipewire/pipewire_hardware.h"

#include "pipewire/hardware_state.h"

#include <algorithm>

namespace sonvel::pipewire {

namespace {

using Lock = LoopThread::Lock;

} // namespace

PipeWireHardware::PipeWireHardware(const ApplicationIdentity& identity)
    : state_(std::make_unique<State>(identity)) {}

PipeWireHardware::~PipeWireHardware() = default;

OSStatus PipeWireHardware::beginConfiguration() {
  const Lock lock(state_->loop);
  if (state_->isConfiguring) return status::kIllegalOperation;
  state_->isConfiguring = true;
  return kNoError;
}

OSStatus PipeWireHardware::commitConfiguration() {
  const Lock lock(state_->loop);
  return state_->isConfiguring ? state_->commit(lock) : status::kIllegalOperation;
}

OSStatus PipeWireHardware::createProcessTap(const TapDescription& description, AudioObjectID& tap) {
  const Lock lock(state_->loop);
  if (!state_->server->isReady()) return status::kNotRunning;
  if (!state_->server->mayHaveTaps()) return status::kIllegalOperation;
  DesiredTap desired;
  desired.nodeName = state_->uniqueName(kTapNamePrefix);
  desired.description = description.name;
  desired.bundleIDs = {description.bundleIDs.begin(), description.bundleIDs.end()};
  desired.isMuted = description.muteBehavior == TapMuteBehavior::muted;
  for (const auto object : description.processes) {
    const ProcessKey* process = state_->processes.nameOf(object);
    if (process == nullptr) return status::kBadObject;
    desired.processes.insert(*process);
  }
  desired.standsBy = desired.isMuted && desired.processes.empty();
  if (!desired.standsBy) state_->joining.noteStrangers(state_->index(), desired);
  if (desired.isMuted) state_->ensureGuardian();
  if (const OSStatus outcome = state_->syncWithServer(lock, deadlineFromNow()); outcome != kNoError)
    return outcome;
  // the guardian may have been told to rest while this call waited
  if (desired.isMuted) state_->guardian.watch();
  tap = state_->ids.next();
  state_->reconciler.desired().taps.emplace(tap, std::move(desired));
  state_->reconciler.schedule();
  return kNoError;
}

OSStatus PipeWireHardware::destroyProcessTap(AudioObjectID tap) {
  const Lock lock(state_->loop);
  DesiredTap* desired = state_->tap(tap);
  if (desired == nullptr) return status::kBadObject;
  (state_->isConfiguring ? desired->isRetired : desired->isLeaving) = true;
  state_->reconciler.schedule();
  if (state_->isConfiguring) return kNoError;
  const OSStatus outcome = state_->waitShortly(lock, [&] { return !state_->reconciler.hasTapNode(tap); });
  if (outcome == status::kUnspecified) return outcome;
  state_->reconciler.desired().taps.erase(tap); // if the server is gone, the node is gone too
  state_->reconciler.schedule();                // the guardian rests after the last tap
  return kNoError;
}

OSStatus PipeWireHardware::createAggregateDevice(const AggregateDeviceDescription& description,
                                                 AudioObjectID& device) {
  const Lock lock(state_->loop);
  if (!state_->server->isReady()) return status::kNotRunning;
  const auto isKnown = [&](const SubDevice& sub) {
    const auto node = state_->index().nodeNamed(sub.uid);
    return node && state_->graph.nodes.at(*node).kind == NodeKind::sink;
  };
  if (description.subDevices.empty() || !std::ranges::all_of(description.subDevices, isKnown))
    return status::kBadDevice;
  State::Aggregate aggregate{.description = description, .taps = {}, .ioProcs = {}};
  for (const auto& sub : description.taps) {
    const auto& taps = state_->reconciler.desired().taps;
    const auto found = std::ranges::find_if(
        taps, [&](const auto& tap) { return tap.second.nodeName == sub.uid && !tap.second.isRetired; });
    if (found == taps.end()) return status::kBadObject;
    if (found->second.isMuted && description.taps.size() > 1) return status::kIllegalOperation;
    aggregate.taps.insert(found->first);
  }
  device = state_->ids.next();
  state_->aggregates.emplace(device, std::move(aggregate));
  return kNoError;
}

OSStatus PipeWireHardware::destroyAggregateDevice(AudioObjectID device) {
  const Lock lock(state_->loop);
  const auto aggregate = state_->aggregates.find(device);
  if (aggregate == state_->aggregates.end()) return state_->statusOfNoAggregate(device);
  std::set<IOProcID> installed;
  for (const auto& [ioProc, block] : aggregate->second.ioProcs)
    installed.insert(ioProc);
  if (const OSStatus outcome = state_->stop(lock, installed); outcome != kNoError) return outcome;
  state_->aggregates.erase(device);
  return kNoError;
}

OSStatus PipeWireHardware::createIOProcID(AudioObjectID device, const IOQueue& /*queue*/, IOProcBlock block,
                                          IOProcID& ioProc) {
  // All filters of this process run on the library's one real-time thread, so every queue is serial.
  const Lock lock(state_->loop);
  const auto aggregate = state_->aggregates.find(device);
  if (aggregate == state_->aggregates.end()) return state_->statusOfNoAggregate(device);
  if (!block) return status::kIllegalOperation;
  ioProc = ++state_->lastIOProc;
  aggregate->second.ioProcs.emplace(ioProc, std::move(block));
  return kNoError;
}

OSStatus PipeWireHardware::destroyIOProcID(AudioObjectID device, IOProcID ioProc) {
  const Lock lock(state_->loop);
  const auto aggregate = state_->aggregates.find(device);
  if (aggregate == state_->aggregates.end()) return state_->statusOfNoAggregate(device);
  if (!aggregate->second.ioProcs.contains(ioProc)) return status::kBadObject;
  if (const OSStatus outcome = state_->stop(lock, {ioProc}); outcome != kNoError) return outcome;
  // Another thread may have changed the list while this one waited.
  if (const auto left = state_->aggregates.find(device); left != state_->aggregates.end())
    left->second.ioProcs.erase(ioProc);
  return kNoError;
}

OSStatus PipeWireHardware::deviceStart(AudioObjectID device, IOProcID ioProc) {
  const Lock lock(state_->loop);
  const auto aggregate = state_->aggregates.find(device);
  if (aggregate == state_->aggregates.end()) return state_->statusOfNoAggregate(device);
  const auto installed = aggregate->second.ioProcs.find(ioProc);
  if (installed == aggregate->second.ioProcs.end()) return status::kBadObject;
  if (!state_->server->isReady()) return status::kNotRunning;
  if (!state_->server->mayHaveTaps()) return status::kIllegalOperation;
  auto& filters = state_->reconciler.desired().filters;
  if (const auto running = filters.find(ioProc); running != filters.end()) {
    running->second.isRetired = false;
    return running->second.isStopping ? status::kIllegalOperation : kNoError;
  }
  const DesiredState& desired = state_->reconciler.desired();
  const auto muted = mutedTapOf(desired, {.taps = aggregate->second.taps});
  const auto readsIt = [&](const auto& filter) { return mutedTapOf(desired, filter.second) == muted; };
  if (muted && std::ranges::any_of(filters, readsIt)) return status::kIllegalOperation;
  state_->reconciler.setBlock(ioProc, installed->second);
  const AggregateDeviceDescription& description = aggregate->second.description;
  filters[ioProc] = {.nodeName = state_->uniqueName("sonvel-aggregate-"),
                     .description = description.name,
                     .deviceName = description.subDevices.front().uid,
                     .taps = aggregate->second.taps,
                     .isHeld = state_->isConfiguring};
  state_->reconciler.schedule();
  const OSStatus outcome = state_->waitShortly(
      lock, [&] { return state_->reconciler.isConnected(ioProc) || state_->reconciler.isRefused(ioProc); });
  if (state_->reconciler.isRefused(ioProc)) return status::kIllegalOperation;
  // If the device takes longer to open, the streams move when it is open.
  return outcome == status::kUnspecified && state_->server->isReady() ? kNoError : outcome;
}

OSStatus PipeWireHardware::deviceStop(AudioObjectID device, IOProcID ioProc) {
  const Lock lock(state_->loop);
  const auto aggregate = state_->aggregates.find(device);
  if (aggregate == state_->aggregates.end()) return state_->statusOfNoAggregate(device);
  if (!aggregate->second.ioProcs.contains(ioProc)) return status::kBadObject;
  return state_->stop(lock, {ioProc});
}

std::vector<AudioClient> PipeWireHardware::audioClients() const {
  const Lock lock(state_->loop);
  std::map<std::uint64_t, AudioClient> bySerial; // in order of arrival
  for (const auto& [id, client] : state_->graph.clients)
    if (state_->index().processOfClient(id) != nullptr) bySerial[client.serial] = client.facts;
  std::vector<AudioClient> clients;
  clients.reserve(bySerial.size());
  for (auto& [serial, client] : bySerial)
    clients.push_back(std::move(client));
  return clients;
}

AudioServer& PipeWireHardware::server() noexcept {
  return state_->serverState;
}

} // namespace sonvel::pipewire
