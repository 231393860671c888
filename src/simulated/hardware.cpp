#include "simulated/simulated_hardware.h"

#include <algorithm>

namespace sonvel::simulated {

OSStatus SimulatedHardware::carryOut(HardwareCall call, const Work& work) {
  {
    const std::lock_guard lock(mutex_);
    call.status = work(call);
  }
  tellListeners();
  return call.status;
}

OSStatus SimulatedHardware::beginConfiguration() {
  return carryOut({.call = Call::beginConfiguration}, [&](HardwareCall&) -> OSStatus {
    if (graphBefore_) return status::kIllegalOperation;
    graphBefore_ = graph_;
    return kNoError;
  });
}

OSStatus SimulatedHardware::commitConfiguration() {
  std::optional<Graph> released; // destroyed without the lock: blocks own foreign objects
  return carryOut({.call = Call::commitConfiguration}, [&](HardwareCall&) -> OSStatus {
    if (!graphBefore_) return status::kIllegalOperation;
    released = std::exchange(graphBefore_, std::nullopt);
    waitForBlock();
    return kNoError;
  });
}

OSStatus SimulatedHardware::createProcessTap(const TapDescription& description, AudioObjectID& tap) {
  tap = kAudioObjectUnknown;
  return carryOut({.call = Call::createProcessTap, .tap = description}, [&](HardwareCall& call) -> OSStatus {
    for (const AudioObjectID process : description.processes)
      if (std::none_of(processes_.begin(), processes_.end(),
                       [process](const Process& other) { return other.id == process; }))
        return status::kBadObject;
    tap = call.object = allotObject(kAudioObjectUnknown);
    graph_.taps.push_back({tap, "tap-" + std::to_string(tap), description});
    return kNoError;
  });
}

OSStatus SimulatedHardware::destroyProcessTap(AudioObjectID tap) {
  return carryOut({.call = Call::destroyProcessTap, .object = tap}, [&](HardwareCall&) -> OSStatus {
    endListeners(tap);
    const auto isIt = [tap](const Tap& other) { return other.id == tap; };
    return std::erase_if(graph_.taps, isIt) > 0 ? kNoError : status::kBadObject;
  });
}

OSStatus SimulatedHardware::checkAggregate(const AggregateDeviceDescription& description) const {
  for (const Aggregate& aggregate : graph_.aggregates)
    if (aggregate.description.uid == description.uid) return status::kIllegalOperation;
  if (description.subDevices.empty()) return status::kBadDevice;
  for (const SubDevice& subDevice : description.subDevices)
    if (presentDevice(subDevice.uid) == nullptr) return status::kBadDevice;
  for (const SubTap& subTap : description.taps) {
    const Tap* const tap = tapWithUID(subTap.uid);
    if (tap == nullptr) return status::kBadObject;
    if (tap->isMuted() && description.taps.size() > 1) return status::kIllegalOperation;
  }
  return kNoError;
}

const Tap* SimulatedHardware::tapWithUID(const std::string& uid) const {
  const auto tap = std::ranges::find(graph_.taps, uid, &Tap::uid);
  return tap == graph_.taps.end() ? nullptr : &*tap;
}

/// Whether a started IOProc reads a muted tap of the device.
bool SimulatedHardware::isReadAlready(AudioObjectID device) const {
  const auto tapsOf = [this](AudioObjectID id) {
    return std::ranges::find(graph_.aggregates, id, &Aggregate::id)->description.taps;
  };
  const auto taps = tapsOf(device);
  return std::ranges::any_of(taps, [&](const SubTap& wanted) {
    const Tap* const tap = tapWithUID(wanted.uid);
    return tap != nullptr && tap->isMuted() &&
           std::ranges::any_of(graph_.ioProcs, [&](const InstalledIOProc& ioProc) {
             const auto others = tapsOf(ioProc.what.device);
             return ioProc.what.isStarted &&
                    std::ranges::find(others, wanted.uid, &SubTap::uid) != others.end();
           });
  });
}

OSStatus SimulatedHardware::createAggregateDevice(const AggregateDeviceDescription& description,
                                                  AudioObjectID& device) {
  device = kAudioObjectUnknown;
  return carryOut({.call = Call::createAggregateDevice, .aggregate = description},
                  [&](HardwareCall& call) -> OSStatus {
                    if (const OSStatus status = checkAggregate(description)) return status;
                    device = call.object = allotObject(kAudioObjectUnknown);
                    graph_.aggregates.push_back({device, description});
                    changed(kSystemObject, property::kDevices);
                    return kNoError;
                  });
}

OSStatus SimulatedHardware::destroyAggregateDevice(AudioObjectID device) {
  std::vector<InstalledIOProc> released; // destroyed without the lock: blocks own foreign objects
  return carryOut({.call = Call::destroyAggregateDevice, .object = device}, [&](HardwareCall&) -> OSStatus {
    const auto isIt = [device](const Aggregate& other) { return other.id == device; };
    if (std::erase_if(graph_.aggregates, isIt) == 0)
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

OSStatus SimulatedHardware::createIOProcID(AudioObjectID device, const IOQueue& queue, IOProcBlock block,
                                           IOProcID& ioProc) {
  ioProc = 0;
  return carryOut({.call = Call::createIOProcID, .object = device, .queue = queue},
                  [&](HardwareCall& call) -> OSStatus {
                    if (const OSStatus status = checkIsAggregate(device)) return status;
                    if (!block) return status::kIllegalOperation;
                    ioProc = call.ioProc = nextIOProcID_++;
                    graph_.ioProcs.push_back({{.id = ioProc, .device = device, .queue = queue},
                                              std::make_shared<const IOProcBlock>(std::move(block))});
                    return kNoError;
                  });
}

OSStatus SimulatedHardware::destroyIOProcID(AudioObjectID device, IOProcID ioProc) {
  std::shared_ptr<const IOProcBlock> released; // destroyed without the lock: blocks own foreign objects
  return carryOut(
      {.call = Call::destroyIOProcID, .object = device, .ioProc = ioProc}, [&](HardwareCall&) -> OSStatus {
        InstalledIOProc* const found = installedIOProc(device, ioProc);
        if (found == nullptr) return status::kBadObject;
        stopAndWait(*found);
        released = std::move(found->block);
        std::erase_if(graph_.ioProcs, [ioProc](const auto& other) { return other.what.id == ioProc; });
        return kNoError;
      });
}

OSStatus SimulatedHardware::deviceStart(AudioObjectID device, IOProcID ioProc) {
  return carryOut({.call = Call::deviceStart, .object = device, .ioProc = ioProc},
                  [&](HardwareCall&) -> OSStatus {
                    if (const OSStatus status = checkIsAggregate(device)) return status;
                    InstalledIOProc* const found = installedIOProc(device, ioProc);
                    if (found == nullptr) return status::kBadObject;
                    if (!found->what.isStarted && isReadAlready(device)) return status::kIllegalOperation;
                    found->what.isStarted = true;
                    return kNoError;
                  });
}

OSStatus SimulatedHardware::deviceStop(AudioObjectID device, IOProcID ioProc) {
  return carryOut({.call = Call::deviceStop, .object = device, .ioProc = ioProc},
                  [&](HardwareCall&) -> OSStatus {
                    InstalledIOProc* const found = installedIOProc(device, ioProc);
                    if (found == nullptr) return status::kBadObject;
                    stopAndWait(*found);
                    return kNoError;
                  });
}

void SimulatedHardware::stopAndWait(InstalledIOProc& ioProc) {
  ioProc.what.isStarted = false;
  waitForBlock();
}

/// Waits while a block runs that has been stopped, except inside a configuration.
void SimulatedHardware::waitForBlock() {
  blockReturned_.wait(mutex_, [this] { return graphBefore_ || !isRunningStopped(); });
}

bool SimulatedHardware::isRunningStopped() const {
  return runningIOProc_ != 0 &&
         std::none_of(graph_.ioProcs.begin(), graph_.ioProcs.end(), [this](const InstalledIOProc& ioProc) {
           return ioProc.what.id == runningIOProc_ && ioProc.what.isStarted;
         });
}

bool SimulatedHardware::isDevice(AudioObjectID object) const {
  return std::any_of(devices_.begin(), devices_.end(),
                     [object](const Device& other) { return other.isPresent && other.id == object; });
}

OSStatus SimulatedHardware::checkIsAggregate(AudioObjectID object) const {
  if (std::any_of(graph_.aggregates.begin(), graph_.aggregates.end(),
                  [object](const Aggregate& other) { return other.id == object; }))
    return kNoError;
  return isDevice(object) ? status::kBadDevice : status::kBadObject;
}

SimulatedHardware::InstalledIOProc* SimulatedHardware::installedIOProc(AudioObjectID device,
                                                                       IOProcID ioProc) {
  for (auto& other : graph_.ioProcs)
    if (other.what.id == ioProc && other.what.device == device) return &other;
  return nullptr;
}

} // namespace sonvel::simulated
