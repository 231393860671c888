#include "simulated/simulated_hardware.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace sonvel::simulated {

namespace {

constexpr auto kInputScope = fourCharCode("inpt");

constexpr bool isGlobal(const PropertyAddress& address) noexcept {
  return address.scope == scope::kGlobal && address.element == kElementMain;
}

/// Streams have no properties here, so their IDs only need to differ.
std::optional<PropertyValue> streamsProperty(const PropertyAddress& address, std::uint32_t outputs,
                                             std::uint32_t inputs) {
  const bool isKnown = address.scope == scope::kOutput || address.scope == kInputScope;
  if (!isKnown || address.element != kElementMain) return std::nullopt;
  const bool isOutput = address.scope == scope::kOutput;
  PropertyList streams(isOutput ? outputs : inputs);
  for (std::uint32_t i = 0; i < streams.size(); ++i)
    streams[i] = (isOutput ? 1 : 1 + outputs) + i;
  return streams;
}

std::optional<PropertyValue> processProperty(const PropertyAddress& address, const ProcessScript& process,
                                             AudioObjectID chosenDevice) {
  if (!isGlobal(address)) return std::nullopt;
  switch (address.selector) {
  case property::kProcessIsRunningOutput:
    return static_cast<std::uint32_t>(process.isPlaying ? 1 : 0);
  case property::kProcessPID:
    return process.pid;
  case property::kProcessBundleID:
    return process.bundleID;
  case property::kProcessChosenDevice:
    return chosenDevice;
  case property::kProcessChoiceSerial:
    return process.choiceSerial;
  default:
    return std::nullopt;
  }
}

std::optional<PropertyValue> deviceProperty(const PropertyAddress& address, const DeviceScript& device) {
  if (address.selector == property::kDeviceStreams)
    return streamsProperty(address, device.outputStreams, device.inputStreams);
  if (address.selector == property::kDeviceVolumeScalar) {
    const auto control = device.volumes.find(address.element);
    if (address.scope != scope::kOutput || control == device.volumes.end()) return std::nullopt;
    return control->second.scalar;
  }
  if (!isGlobal(address)) return std::nullopt;
  if (address.selector == property::kDeviceUID) return PropertyText(device.uid);
  if (address.selector == property::kObjectName) return device.name;
  return std::nullopt;
}

std::optional<PropertyValue> aggregateProperty(const PropertyAddress& address,
                                               const AggregateDeviceDescription& aggregate) {
  if (address.selector == property::kDeviceStreams)
    return streamsProperty(address, 1, static_cast<std::uint32_t>(aggregate.taps.size()));
  if (!isGlobal(address)) return std::nullopt;
  if (address.selector == property::kDeviceUID) return PropertyText(aggregate.uid);
  if (address.selector == property::kObjectName) return PropertyText(aggregate.name);
  return std::nullopt;
}

std::optional<PropertyValue> tapProperty(const PropertyAddress& address, const Tap& tap, bool isPartial) {
  if (!isGlobal(address)) return std::nullopt;
  switch (address.selector) {
  case property::kTapUID:
    return PropertyText(tap.uid);
  case property::kTapProcessList:
    return PropertyList(tap.description.processes);
  case property::kTapIsPartial:
    return static_cast<std::uint32_t>(isPartial ? 1 : 0);
  default:
    return std::nullopt;
  }
}

/// Sets one volume control of a device and updates the others: the main one is the louder of both channels,
/// and setting it keeps their balance.
void setVolume(std::map<std::uint32_t, VolumeControl>& volumes, std::uint32_t element, float scalar) {
  volumes[element].scalar = scalar;
  const auto main = volumes.find(kElementMain);
  const auto left = volumes.find(kElementLeft);
  const auto right = volumes.find(kElementRight);
  if (main == volumes.end() || left == volumes.end() || right == volumes.end()) return;
  float& leftScalar = left->second.scalar;
  float& rightScalar = right->second.scalar;
  const float louder = std::max(leftScalar, rightScalar);
  if (element != kElementMain) {
    main->second.scalar = louder;
  } else {
    leftScalar = louder > 0.0F ? scalar * leftScalar / louder : scalar;
    rightScalar = louder > 0.0F ? scalar * rightScalar / louder : scalar;
  }
}

} // namespace

std::optional<PropertyValue> SimulatedHardware::systemProperty(const PropertyAddress& address) const {
  if (!isGlobal(address)) return std::nullopt;
  if (address.selector == property::kDefaultOutputDevice) {
    const Device* device = defaultDeviceUID_ ? presentDevice(*defaultDeviceUID_) : nullptr;
    return device != nullptr ? device->id : kAudioObjectUnknown;
  }
  PropertyList list;
  if (address.selector == property::kProcessObjectList) {
    for (const Process& process : processes_)
      list.push_back(process.id);
    return list;
  }
  if (address.selector != property::kDevices) return std::nullopt;
  for (const Device& device : devices_)
    if (device.isPresent) list.push_back(device.id);
  for (const Aggregate& aggregate : graph_.aggregates)
    list.push_back(aggregate.id);
  return list;
}

/// A disconnected device keeps its object until it returns as a new one.
AudioObjectID SimulatedHardware::chosenDevice(const ProcessScript& process) const {
  const auto isIt = [&](const Device& device) { return device.script.uid == process.outputUID; };
  const auto device = std::find_if(devices_.begin(), devices_.end(), isIt);
  return device != devices_.end() ? device->id : kAudioObjectUnknown;
}

OSStatus SimulatedHardware::findProperty(AudioObjectID object, const PropertyAddress& address,
                                         PropertyValue& value) const {
  const auto hasID = [object](const auto& record) { return record.id == object; };
  const auto process = std::find_if(processes_.begin(), processes_.end(), hasID);
  const auto device = std::find_if(devices_.begin(), devices_.end(), hasID);
  const auto aggregate = std::find_if(graph_.aggregates.begin(), graph_.aggregates.end(), hasID);
  const auto tap = std::find_if(graph_.taps.begin(), graph_.taps.end(), hasID);

  std::optional<PropertyValue> found;
  if (object == kSystemObject)
    found = systemProperty(address);
  else if (process != processes_.end())
    found = processProperty(address, process->script, chosenDevice(process->script));
  else if (device != devices_.end() && device->isPresent)
    found = deviceProperty(address, device->script);
  else if (aggregate != graph_.aggregates.end())
    found = aggregateProperty(address, aggregate->description);
  else if (tap != graph_.taps.end())
    found = tapProperty(address, *tap, isPartial(*tap));
  else
    return status::kBadObject;

  if (!found) return status::kUnknownProperty;
  value = std::move(*found);
  return kNoError;
}

OSStatus SimulatedHardware::getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                                std::uint32_t& sizeBytes) {
  return carryOut({.call = Call::getPropertyDataSize, .object = object, .address = address},
                  [&](HardwareCall&) -> OSStatus {
                    PropertyValue value;
                    if (const OSStatus status = findProperty(object, address, value)) return status;
                    const auto bytes = bytesOf(value);
                    if (!bytes) return status::kBadPropertySize;
                    sizeBytes = static_cast<std::uint32_t>(bytes->size());
                    return kNoError;
                  });
}

OSStatus SimulatedHardware::getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                            std::uint32_t& sizeBytes, std::span<std::byte> data) {
  return carryOut({.call = Call::getPropertyData, .object = object, .address = address},
                  [&](HardwareCall&) -> OSStatus {
                    PropertyValue value;
                    if (const OSStatus status = findProperty(object, address, value)) return status;
                    const auto bytes = bytesOf(value);
                    const bool isList = std::holds_alternative<PropertyList>(value);
                    if (!bytes || (!isList && bytes->size() != data.size())) return status::kBadPropertySize;
                    const std::size_t wholeItems = data.size() - data.size() % sizeof(std::uint32_t);
                    const std::size_t count = std::min(bytes->size(), wholeItems);
                    std::copy_n(bytes->begin(), count, data.begin());
                    sizeBytes = static_cast<std::uint32_t>(count);
                    return kNoError;
                  });
}

OSStatus SimulatedHardware::getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                            std::optional<std::string>& text) {
  text.reset();
  return carryOut({.call = Call::getPropertyText, .object = object, .address = address},
                  [&](HardwareCall&) -> OSStatus {
                    PropertyValue value;
                    if (const OSStatus status = findProperty(object, address, value)) return status;
                    auto* const found = std::get_if<PropertyText>(&value);
                    if (found == nullptr) return status::kBadPropertySize;
                    text = std::move(*found);
                    return kNoError;
                  });
}

bool SimulatedHardware::hasProperty(AudioObjectID object, const PropertyAddress& address) {
  bool isThere = false;
  carryOut({.call = Call::hasProperty, .object = object, .address = address}, [&](HardwareCall&) -> OSStatus {
    PropertyValue value;
    const OSStatus status = findProperty(object, address, value);
    isThere = status == kNoError;
    return status;
  });
  return isThere;
}

OSStatus SimulatedHardware::isPropertySettable(AudioObjectID object, const PropertyAddress& address,
                                               bool& isSettable) {
  return carryOut({.call = Call::isPropertySettable, .object = object, .address = address},
                  [&](HardwareCall&) -> OSStatus {
                    PropertyValue value;
                    if (const OSStatus status = findProperty(object, address, value)) return status;
                    const VolumeControl* const control = volumeControl(object, address);
                    isSettable = address.selector == property::kTapProcessList ||
                                 (control != nullptr && control->isSettable);
                    return kNoError;
                  });
}

OSStatus SimulatedHardware::setPropertyData(AudioObjectID object, const PropertyAddress& address,
                                            std::span<const std::byte> data) {
  return carryOut({.call = Call::setPropertyData, .object = object, .address = address},
                  [&](HardwareCall&) -> OSStatus {
                    PropertyValue value;
                    if (const OSStatus status = findProperty(object, address, value)) return status;
                    return address.selector == property::kTapProcessList ? setTapProcesses(object, data)
                                                                         : writeVolume(object, address, data);
                  });
}

OSStatus SimulatedHardware::setTapProcesses(AudioObjectID tap, std::span<const std::byte> data) {
  if (data.size() % sizeof(AudioObjectID) != 0) return status::kBadPropertySize;
  std::vector<AudioObjectID> wanted(data.size() / sizeof(AudioObjectID));
  std::copy(data.begin(), data.end(), std::as_writable_bytes(std::span(wanted)).begin());
  for (const AudioObjectID process : wanted)
    if (std::none_of(processes_.begin(), processes_.end(),
                     [process](const Process& other) { return other.id == process; }))
      return status::kBadObject;
  const auto found = std::find_if(graph_.taps.begin(), graph_.taps.end(),
                                  [tap](const Tap& other) { return other.id == tap; });
  found->description.processes = std::move(wanted);
  changed(tap, property::kTapProcessList);
  changed(tap, property::kTapIsPartial);
  return kNoError;
}

OSStatus SimulatedHardware::writeVolume(AudioObjectID object, const PropertyAddress& address,
                                        std::span<const std::byte> data) {
  const VolumeControl* const control = volumeControl(object, address);
  if (control == nullptr || !control->isSettable) return status::kIllegalOperation;
  float scalar = 0.0F;
  if (data.size() != sizeof scalar) return status::kBadPropertySize;
  std::memcpy(&scalar, data.data(), sizeof scalar);
  if (std::isnan(scalar)) return status::kIllegalOperation;
  const auto device =
      std::find_if(devices_.begin(), devices_.end(), [&](const Device& other) { return other.id == object; });
  setVolume(device->script.volumes, address.element, std::clamp(scalar, 0.0F, 1.0F));
  for (const auto& [element, other] : device->script.volumes)
    changes_.push_back({object, {property::kDeviceVolumeScalar, scope::kOutput, element}});
  return kNoError;
}

const VolumeControl* SimulatedHardware::volumeControl(AudioObjectID object,
                                                      const PropertyAddress& address) const {
  if (address.selector != property::kDeviceVolumeScalar || address.scope != scope::kOutput) return nullptr;
  for (const Device& device : devices_) {
    const auto control = device.script.volumes.find(address.element);
    if (device.id == object && control != device.script.volumes.end()) return &control->second;
  }
  return nullptr;
}

} // namespace sonvel::simulated
