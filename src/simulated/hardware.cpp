#include "simulated/simulated_audio.h"

#include <algorithm>

namespace sonvel::simulated {

OSStatus SimulatedAudio::carryOut(LoggedCall call, const Work& work) {
  std::function<void(Call, AudioObjectID)> hook;
  {
    const std::lock_guard lock(mutex_);
    hook = callHook_;
  }
  if (hook) hook(call.call, call.object);
  {
    const std::lock_guard lock(mutex_);
    const std::span<const AudioObjectID> objects =
        call.tap ? std::span<const AudioObjectID>(call.tap->processes) : std::span(&call.object, 1);
    const auto failure = failures_.take(call.call, objects, call.address.selector);
    call.status = failure ? *failure : work(call);
    if (failure && call.call == Call::commitConfiguration) work(call); // which ends in either case
    log_.push_back(call);
  }
  tellListeners();
  return call.status;
}

OSStatus SimulatedAudio::beginConfiguration() {
  return carryOut({.call = Call::beginConfiguration}, [&](LoggedCall&) -> OSStatus {
    if (graphBefore_) return status::kIllegalOperation;
    graphBefore_ = graph_;
    return kNoError;
  });
}

OSStatus SimulatedAudio::commitConfiguration() {
  std::optional<Graph> released; // after the lock: what the blocks hold is not ours
  return carryOut({.call = Call::commitConfiguration}, [&](LoggedCall&) -> OSStatus {
    if (!graphBefore_) return status::kIllegalOperation;
    released = std::exchange(graphBefore_, std::nullopt);
    waitForBlock();
    return kNoError;
  });
}

OSStatus SimulatedAudio::createProcessTap(const TapDescription& description, AudioObjectID& tap) {
  tap = kAudioObjectUnknown;
  return carryOut({.call = Call::createProcessTap, .tap = description}, [&](LoggedCall& call) -> OSStatus {
    for (const AudioObjectID process : description.processes)
      if (std::none_of(processes_.begin(), processes_.end(),
                       [process](const Process& other) { return other.id == process; }))
        return status::kBadObject;
    tap = call.object = allotObject(kAudioObjectUnknown);
    graph_.taps.push_back({tap, "tap-" + std::to_string(tap), description});
    return kNoError;
  });
}

OSStatus SimulatedAudio::destroyProcessTap(AudioObjectID tap) {
  return carryOut({.call = Call::destroyProcessTap, .object = tap}, [&](LoggedCall&) -> OSStatus {
    endListeners(tap);
    const auto isIt = [tap](const Tap& other) { return other.id == tap; };
    return std::erase_if(graph_.taps, isIt) > 0 || lost_.erase(tap) > 0 ? kNoError : status::kBadObject;
  });
}

OSStatus SimulatedAudio::checkAggregate(const AggregateDeviceDescription& description) const {
  for (const Aggregate& aggregate : graph_.aggregates)
    if (aggregate.description.uid == description.uid) return status::kIllegalOperation;
  if (description.subDevices.empty()) return status::kBadDevice;
  for (const SubDevice& subDevice : description.subDevices)
    if (presentDevice(subDevice.uid) == nullptr) return status::kBadDevice;
  for (const SubTap& subTap : description.taps)
    if (std::none_of(graph_.taps.begin(), graph_.taps.end(),
                     [&](const Tap& tap) { return tap.uid == subTap.uid; }))
      return status::kBadObject;
  return kNoError;
}

OSStatus SimulatedAudio::createAggregateDevice(const AggregateDeviceDescription& description,
                                               AudioObjectID& device) {
  device = kAudioObjectUnknown;
  return carryOut({.call = Call::createAggregateDevice, .aggregate = description},
                  [&](LoggedCall& call) -> OSStatus {
                    if (const OSStatus status = checkAggregate(description)) return status;
                    device = call.object = allotObject(kAudioObjectUnknown);
                    graph_.aggregates.push_back({device, description});
                    changed(kSystemObject, property::kDevices);
                    return kNoError;
                  });
}

OSStatus SimulatedAudio::destroyAggregateDevice(AudioObjectID device) {
  std::vector<InstalledIOProc> released; // after the lock: what the blocks hold is not ours
  return carryOut({.call = Call::destroyAggregateDevice, .object = device}, [&](LoggedCall&) -> OSStatus {
    const auto isIt = [device](const Aggregate& other) { return other.id == device; };
    if (std::erase_if(graph_.aggregates, isIt) == 0 && lost_.erase(device) == 0)
      return isDevice(device) ? status::kBadDevice : status::kBadObject;
    auto& ioProcs = graph_.ioProcs;
    const auto others = std::stable_partition(
        ioProcs.begin(), ioProcs.end(), [&](const auto& ioProc) { return ioProc.what.device != device; });
    std::move(others, ioProcs.end(), std::back_inserter(released));
    ioProcs.erase(others, ioProcs.end());
    waitForBlock();
    endListeners(device);
    changed(kSystemObject, property::kDevices);
    return kNoError;
  });
}

OSStatus SimulatedAudio::createIOProcID(AudioObjectID device, const IOQueue& queue, IOProcBlock block,
                                        IOProcID& ioProc) {
  ioProc = 0;
  return carryOut({.call = Call::createIOProcID, .object = device, .queue = queue},
                  [&](LoggedCall& call) -> OSStatus {
                    if (const OSStatus status = checkIsAggregate(device)) return status;
                    if (!block) return status::kIllegalOperation;
                    ioProc = call.ioProc = nextIOProcID_++;
                    graph_.ioProcs.push_back({{.id = ioProc, .device = device, .queue = queue},
                                              std::make_shared<const IOProcBlock>(std::move(block))});
                    return kNoError;
                  });
}

OSStatus SimulatedAudio::destroyIOProcID(AudioObjectID device, IOProcID ioProc) {
  std::shared_ptr<const IOProcBlock> released; // after the lock: what the block holds is not ours
  return carryOut(
      {.call = Call::destroyIOProcID, .object = device, .ioProc = ioProc}, [&](LoggedCall&) -> OSStatus {
        InstalledIOProc* const found = installedIOProc(device, ioProc);
        if (found == nullptr) return status::kBadObject;
        stopAndWait(*found);
        released = std::move(found->block);
        std::erase_if(graph_.ioProcs, [ioProc](const auto& other) { return other.what.id == ioProc; });
        return kNoError;
      });
}

OSStatus SimulatedAudio::deviceStart(AudioObjectID device, IOProcID ioProc) {
  return carryOut({.call = Call::deviceStart, .object = device, .ioProc = ioProc},
                  [&](LoggedCall&) -> OSStatus {
                    if (const OSStatus status = checkIsAggregate(device)) return status;
                    InstalledIOProc* const found = installedIOProc(device, ioProc);
                    if (found == nullptr) return status::kBadObject;
                    found->what.isStarted = true;
                    return kNoError;
                  });
}

OSStatus SimulatedAudio::deviceStop(AudioObjectID device, IOProcID ioProc) {
  return carryOut({.call = Call::deviceStop, .object = device, .ioProc = ioProc},
                  [&](LoggedCall&) -> OSStatus {
                    InstalledIOProc* const found = installedIOProc(device, ioProc);
                    if (found == nullptr) return status::kBadObject;
                    stopAndWait(*found);
                    return kNoError;
                  });
}

void SimulatedAudio::stopAndWait(InstalledIOProc& ioProc) {
  ioProc.what.isStarted = false;
  waitForBlock();
}

/// Waits while a block runs that is to run no longer. In a configuration it may.
void SimulatedAudio::waitForBlock() {
  blockReturned_.wait(mutex_, [this] { return graphBefore_ || !isRunningStopped(); });
}

bool SimulatedAudio::isRunningStopped() const {
  return runningIOProc_ != 0 &&
         std::none_of(graph_.ioProcs.begin(), graph_.ioProcs.end(), [this](const InstalledIOProc& ioProc) {
           return ioProc.what.id == runningIOProc_ && ioProc.what.isStarted;
         });
}

bool SimulatedAudio::isDevice(AudioObjectID object) const {
  return std::any_of(devices_.begin(), devices_.end(),
                     [object](const Device& other) { return other.isPresent && other.id == object; });
}

OSStatus SimulatedAudio::checkIsAggregate(AudioObjectID object) const {
  if (std::any_of(graph_.aggregates.begin(), graph_.aggregates.end(),
                  [object](const Aggregate& other) { return other.id == object; }))
    return kNoError;
  return isDevice(object) ? status::kBadDevice : status::kBadObject;
}

SimulatedAudio::InstalledIOProc* SimulatedAudio::installedIOProc(AudioObjectID device, IOProcID ioProc) {
  for (auto& other : graph_.ioProcs)
    if (other.what.id == ioProc && other.what.device == device) return &other;
  return nullptr;
}

} // namespace sonvel::simulated
