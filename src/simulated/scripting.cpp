#include "simulated/simulated_hardware.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

namespace sonvel::simulated {

Signal sineSignal(double frequencyHz, float amplitude) {
  return [=](std::uint64_t frame) {
    const double turns = frequencyHz * static_cast<double>(frame) / kSampleRateHz;
    const auto sample = static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * turns));
    return Frame{sample, sample};
  };
}

/// Holds the lock during a change, and calls the listeners afterwards.
class SimulatedHardware::Change {
 public:
  explicit Change(SimulatedHardware& audio)
      : audio_(audio)
      , lock_(audio.mutex_) {}

  Change(const Change&) = delete;
  Change& operator=(const Change&) = delete;

  ~Change() {
    lock_.unlock();
    audio_.tellListeners();
  }

 private:
  SimulatedHardware& audio_;
  std::unique_lock<std::mutex> lock_;
};

AudioObjectID SimulatedHardware::allotObject(AudioObjectID wished) {
  if (wished == kAudioObjectUnknown) return nextObjectID_++;
  const auto hasID = [wished](const auto& record) { return record.id == wished; };
  if (wished == kSystemObject || std::any_of(processes_.begin(), processes_.end(), hasID) ||
      std::any_of(devices_.begin(), devices_.end(), hasID) ||
      std::any_of(graph_.aggregates.begin(), graph_.aggregates.end(), hasID) ||
      std::any_of(graph_.taps.begin(), graph_.taps.end(), hasID))
    throw std::invalid_argument("the object ID is taken");
  nextObjectID_ = std::max(nextObjectID_, wished + 1);
  return wished;
}

AudioObjectID SimulatedHardware::addProcess(ProcessScript process) {
  const Change change(*this);
  const AudioObjectID id = allotObject(process.objectID);
  processes_.push_back({id, std::move(process)});
  changed(kSystemObject, property::kProcessObjectList);
  return id;
}

void SimulatedHardware::removeProcess(AudioObjectID process) {
  const Change change(*this);
  if (std::erase_if(processes_, [=](const Process& other) { return other.id == process; }) == 0)
    throw std::invalid_argument("no such process");
  endListeners(process);
  changed(kSystemObject, property::kProcessObjectList);
}

ProcessScript& SimulatedHardware::processScript(AudioObjectID process) {
  for (Process& other : processes_)
    if (other.id == process) return other.script;
  throw std::invalid_argument("no such process");
}

void SimulatedHardware::setPlaying(AudioObjectID process, bool isPlaying) {
  const Change change(*this);
  processScript(process).isPlaying = isPlaying;
  changed(process, property::kProcessIsRunningOutput);
}

void SimulatedHardware::setSignal(AudioObjectID process, Signal signal) {
  const Change change(*this);
  processScript(process).streams = {std::move(signal)};
}

void SimulatedHardware::addStream(AudioObjectID process, Signal signal) {
  const Change change(*this);
  processScript(process).streams.push_back(std::move(signal));
}

void SimulatedHardware::setProcessOutput(AudioObjectID process, std::optional<std::string> deviceUID) {
  const Change change(*this);
  ProcessScript& script = processScript(process);
  script.outputUID = std::move(deviceUID);
  script.choiceSerial = ++lastChoiceSerial_;
  changed(process, property::kProcessChosenDevice);
  changed(process, property::kProcessChoiceSerial);
}

void SimulatedHardware::setFixedStreams(AudioObjectID process, std::vector<Signal> signals) {
  const Change change(*this);
  processScript(process).fixedStreams = std::move(signals);
  for (const Tap& tap : graph_.taps)
    changed(tap.id, property::kTapIsPartial);
}

SimulatedHardware::Device* SimulatedHardware::knownDevice(const std::string& uid) {
  const auto found = std::find_if(devices_.begin(), devices_.end(),
                                  [&](const Device& other) { return other.script.uid == uid; });
  return found != devices_.end() ? &*found : nullptr;
}

const SimulatedHardware::Device* SimulatedHardware::presentDevice(const std::string& uid) const {
  const auto found = std::find_if(devices_.begin(), devices_.end(), [&](const Device& other) {
    return other.isPresent && other.script.uid == uid;
  });
  return found != devices_.end() ? &*found : nullptr;
}

AudioObjectID SimulatedHardware::addDevice(DeviceScript device) {
  const Change change(*this);
  if (knownDevice(device.uid) != nullptr) throw std::invalid_argument("the device UID is taken");
  const AudioObjectID id = allotObject(device.objectID);
  if (!defaultDeviceUID_ && device.outputStreams > 0) defaultDeviceUID_ = device.uid;
  devices_.push_back({.id = id, .script = std::move(device)});
  devicesChanged();
  return id;
}

void SimulatedHardware::removeDevice(const std::string& uid) {
  const Change change(*this);
  Device* const device = knownDevice(uid);
  if (device == nullptr || !device->isPresent) throw std::invalid_argument("no such device");
  device->isPresent = false;
  endListeners(device->id);
  devicesChanged();
}

AudioObjectID SimulatedHardware::returnDevice(const std::string& uid) {
  const Change change(*this);
  Device* const device = knownDevice(uid);
  if (device == nullptr || device->isPresent) throw std::invalid_argument("no device of this UID is away");
  device->isPresent = true;
  device->id = allotObject(kAudioObjectUnknown);
  for (const Process& process : processes_)
    if (process.script.outputUID == uid) changed(process.id, property::kProcessChosenDevice);
  devicesChanged();
  return device->id;
}

void SimulatedHardware::setDefaultDevice(std::optional<std::string> uid) {
  const Change change(*this);
  if (uid && knownDevice(*uid) == nullptr) throw std::invalid_argument("no such device");
  defaultDeviceUID_ = std::move(uid);
  changed(kSystemObject, property::kDefaultOutputDevice);
}

void SimulatedHardware::devicesChanged() {
  changed(kSystemObject, property::kDevices);
  changed(kSystemObject, property::kDefaultOutputDevice);
}

AudioObjectID SimulatedHardware::deviceWithUID(const std::string& uid) const {
  const std::lock_guard lock(mutex_);
  if (const Device* const device = presentDevice(uid)) return device->id;
  for (const Aggregate& aggregate : graph_.aggregates)
    if (aggregate.description.uid == uid) return aggregate.id;
  return kAudioObjectUnknown;
}

std::vector<Tap> SimulatedHardware::taps() const {
  const std::lock_guard lock(mutex_);
  return graph_.taps;
}

std::vector<Aggregate> SimulatedHardware::aggregates() const {
  const std::lock_guard lock(mutex_);
  return graph_.aggregates;
}

std::vector<IOProc> SimulatedHardware::ioProcs() const {
  const std::lock_guard lock(mutex_);
  std::vector<IOProc> found;
  for (const auto& ioProc : graph_.ioProcs)
    found.push_back(ioProc.what);
  return found;
}

bool SimulatedHardware::isClean() const {
  const std::lock_guard lock(mutex_);
  return graph_.taps.empty() && graph_.aggregates.empty() && graph_.ioProcs.empty();
}

} // namespace sonvel::simulated
