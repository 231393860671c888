#include "pipewire/hardware_properties.h"

#include "pipewire/device_volume.h"
#include "pipewire/process_facts.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace sonvel::pipewire {

namespace {

using Lock = LoopThread::Lock;

std::vector<std::byte> bytesOf(std::span<const std::byte> bytes) {
  return {bytes.begin(), bytes.end()};
}

template <class Value> std::vector<std::byte> bytesOf(const Value& value) {
  return bytesOf(std::as_bytes(std::span(&value, 1)));
}

std::vector<std::byte> bytesOf(const std::vector<AudioObjectID>& values) {
  return bytesOf(std::as_bytes(std::span(values)));
}

bool isList(std::uint32_t selector) {
  return selector == property::kProcessObjectList || selector == property::kDevices ||
         selector == property::kDeviceStreams || selector == property::kTapProcessList;
}

} // namespace

PipeWireHardware::PropertyReader::Bytes PipeWireHardware::PropertyReader::data() {
  if (object_ == kSystemObject) return systemData();
  if (const AudioClient* client = state_.clientOf(object_)) return processData(*client);
  if (const DesiredTap* tap = state_.tap(object_)) return tapData(*tap);
  if (state_.aggregates.contains(object_))
    return isStreams() ? Bytes(bytesOf(std::uint32_t{object_})) : std::nullopt;
  if (const auto device = state_.deviceNode(object_)) return deviceData(*device);
  return std::nullopt;
}

std::optional<std::optional<std::string>> PipeWireHardware::PropertyReader::text() {
  if (state_.clientOf(object_) != nullptr && address_.selector == property::kProcessBundleID)
    return std::optional<std::string>();
  if (const auto aggregate = state_.aggregates.find(object_); aggregate != state_.aggregates.end()) {
    if (address_.selector == property::kDeviceUID) return aggregate->second.description.uid;
    if (address_.selector == property::kObjectName) return aggregate->second.description.name;
  }
  if (const auto device = state_.deviceNode(object_)) {
    const Node& node = state_.graph.nodes.at(*device);
    if (address_.selector == property::kDeviceUID) return node.name;
    if (address_.selector == property::kObjectName)
      return node.description.empty() ? std::optional<std::string>() : node.description;
  }
  if (const DesiredTap* tap = state_.tap(object_); tap != nullptr && address_.selector == property::kTapUID)
    return tap->nodeName;
  return std::nullopt;
}

PipeWireHardware::PropertyReader::Bytes PipeWireHardware::PropertyReader::anyValue() {
  if (auto value = data()) return value;
  const auto found = text();
  if (!found) return std::nullopt;
  const std::string string = found->value_or("");
  return bytesOf(std::as_bytes(std::span(string)));
}

bool PipeWireHardware::PropertyReader::objectExists() const {
  return object_ == kSystemObject || state_.clientOf(object_) != nullptr || state_.tap(object_) != nullptr ||
         state_.aggregates.contains(object_) || state_.deviceNode(object_);
}

bool PipeWireHardware::PropertyReader::isStreams() const {
  return address_.selector == property::kDeviceStreams && address_.scope == scope::kOutput;
}

PipeWireHardware::PropertyReader::Bytes PipeWireHardware::PropertyReader::systemData() {
  if (address_.selector == property::kProcessObjectList) return bytesOf(state_.processObjects());
  if (address_.selector == property::kDevices) return bytesOf(state_.deviceObjects());
  if (address_.selector != property::kDefaultOutputDevice) return std::nullopt;
  const auto& name = state_.graph.defaultSinkName;
  const bool isThere = !name.empty() && state_.index().nodeNamed(name);
  return bytesOf(isThere ? state_.devices.idOf(name) : kAudioObjectUnknown);
}

/// The device chosen for a process; 0 if it follows the default.
AudioObjectID PipeWireHardware::PropertyReader::chosenDeviceOf(const ProcessKey& process) const {
  const auto device = chosenNodeOf(state_.index(), process);
  if (!device || state_.graph.nodes.at(*device).kind != NodeKind::sink) return kAudioObjectUnknown;
  return state_.devices.idOf(state_.graph.nodes.at(*device).name);
}

PipeWireHardware::PropertyReader::Bytes
PipeWireHardware::PropertyReader::processData(const AudioClient& client) {
  const ProcessKey& process = *state_.processes.nameOf(object_);
  switch (address_.selector) {
  case property::kProcessIsRunningOutput:
    return bytesOf(std::uint32_t{isRunningOutput(state_.index(), process) ? 1U : 0U});
  case property::kProcessPID:
    return bytesOf(client.processID);
  case property::kProcessChosenDevice:
    return bytesOf(chosenDeviceOf(process));
  case property::kProcessChoiceSerial:
    return bytesOf(choiceSerialOf(state_.index(), process));
  default:
    return std::nullopt;
  }
}

PipeWireHardware::PropertyReader::Bytes PipeWireHardware::PropertyReader::tapData(const DesiredTap& tap) {
  if (address_.selector == property::kTapIsPartial)
    return bytesOf(std::uint32_t{state_.reconciler.isPartial(object_) ? 1U : 0U});
  if (address_.selector != property::kTapProcessList) return std::nullopt;
  std::vector<AudioObjectID> objects;
  for (const auto& process : tap.processes)
    objects.push_back(state_.processes.idOf(process));
  return bytesOf(objects);
}

PipeWireHardware::PropertyReader::Bytes PipeWireHardware::PropertyReader::deviceData(GlobalID device) const {
  const bool isSink = state_.graph.nodes.at(device).kind == NodeKind::sink;
  if (address_.selector == property::kDeviceStreams)
    return isStreams() && isSink ? bytesOf(std::uint32_t{object_}) : std::vector<std::byte>();
  if (address_.selector != property::kDeviceVolumeScalar || address_.scope != scope::kOutput || !isSink)
    return std::nullopt;
  const auto scalar = volumeScalar(deviceVolumes(state_.graph, device), address_.element);
  return scalar ? Bytes(bytesOf(*scalar)) : std::nullopt;
}

OSStatus PipeWireHardware::getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                               std::uint32_t& sizeBytes) {
  const Lock lock(state_->loop);
  // These two lists must be up to date, including programs that have just connected. While the server does
  // not answer they are what it has told before: nothing has ended.
  const bool isSystemList =
      address.selector == property::kProcessObjectList || address.selector == property::kDevices;
  if (isSystemList && state_->server->isReady())
    static_cast<void>(state_->syncWithServer(lock, deadlineFromNow()));
  if (!state_->server->isReady()) return status::kNotRunning;
  PropertyReader reader(*state_, object, address);
  const auto data = reader.data();
  if (!data) return reader.objectExists() ? status::kUnknownProperty : status::kBadObject;
  sizeBytes = static_cast<std::uint32_t>(data->size());
  return kNoError;
}

OSStatus PipeWireHardware::getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                           std::uint32_t& sizeBytes, std::span<std::byte> data) {
  const Lock lock(state_->loop);
  if (!state_->server->isReady()) return status::kNotRunning;
  PropertyReader reader(*state_, object, address);
  const auto value = reader.data();
  if (!value) return reader.objectExists() ? status::kUnknownProperty : status::kBadObject;
  if (!isList(address.selector) && data.size() != value->size()) return status::kBadPropertySize;
  const std::size_t whole =
      std::min(data.size(), value->size()) / sizeof(AudioObjectID) * sizeof(AudioObjectID);
  std::copy_n(value->begin(), whole, data.begin());
  sizeBytes = static_cast<std::uint32_t>(whole);
  return kNoError;
}

OSStatus PipeWireHardware::getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                           std::optional<std::string>& text) {
  std::optional<AudioClient> client;
  {
    const Lock lock(state_->loop);
    if (!state_->server->isReady()) return status::kNotRunning;
    PropertyReader reader(*state_, object, address);
    auto value = reader.text();
    if (!value) return reader.objectExists() ? status::kUnknownProperty : status::kBadObject;
    text = std::move(*value);
    if (address.selector != property::kProcessBundleID) return kNoError;
    client = *state_->clientOf(object);
  }
  // Identifying reads files, which must not delay events.
  text = state_->identity.bundleIdentifier(*client);
  return kNoError;
}

bool PipeWireHardware::hasProperty(AudioObjectID object, const PropertyAddress& address) {
  const Lock lock(state_->loop);
  PropertyReader reader(*state_, object, address);
  return reader.exists();
}

OSStatus PipeWireHardware::isPropertySettable(AudioObjectID object, const PropertyAddress& address,
                                              bool& isSettable) {
  const Lock lock(state_->loop);
  if (!state_->server->isReady()) return status::kNotRunning;
  PropertyReader reader(*state_, object, address);
  if (!reader.exists()) return reader.objectExists() ? status::kUnknownProperty : status::kBadObject;
  isSettable =
      address.selector == property::kDeviceVolumeScalar || address.selector == property::kTapProcessList;
  return kNoError;
}

OSStatus PipeWireHardware::setPropertyData(AudioObjectID object, const PropertyAddress& address,
                                           std::span<const std::byte> data) {
  const Lock lock(state_->loop);
  if (!state_->server->isReady()) return status::kNotRunning;
  PropertyReader reader(*state_, object, address);
  if (!reader.exists()) return reader.objectExists() ? status::kUnknownProperty : status::kBadObject;
  if (address.selector == property::kTapProcessList) return setTapProcesses(object, data);
  if (address.selector != property::kDeviceVolumeScalar) return status::kIllegalOperation;
  float scalar = 0.0F;
  if (data.size() != sizeof scalar) return status::kBadPropertySize;
  std::memcpy(&scalar, data.data(), sizeof scalar);
  if (!std::isfinite(scalar)) return status::kIllegalOperation;
  scalar = std::clamp(scalar, 0.0F, 1.0F);
  const auto device = state_->deviceNode(object);
  if (!device) return status::kBadObject;
  const auto volumes = withVolumeScalar(deviceVolumes(state_->graph, *device), address.element, scalar);
  setDeviceVolumes(state_->graph, *state_->server->monitor(), *device, volumes);
  state_->reconciler.schedule(); // the graph has the value already; this calls the listeners
  return state_->syncWithServer(lock, deadlineFromNow());
}

OSStatus PipeWireHardware::setTapProcesses(AudioObjectID object, std::span<const std::byte> data) {
  DesiredTap* tap = state_->tap(object);
  if (tap == nullptr) return status::kBadObject;
  if (data.size() % sizeof(AudioObjectID) != 0) return status::kBadPropertySize;
  std::vector<AudioObjectID> objects(data.size() / sizeof(AudioObjectID));
  std::memcpy(objects.data(), data.data(), data.size());
  std::set<ProcessKey> processes;
  for (const auto id : objects) {
    const ProcessKey* process = state_->processes.nameOf(id);
    if (process == nullptr) return status::kBadObject;
    processes.insert(*process);
  }
  tap->standsBy &= processes.empty();
  tap->processes = std::move(processes);
  state_->joining.noteStrangers(state_->index(), *tap);
  state_->reconciler.schedule();
  return kNoError;
}

OSStatus PipeWireHardware::addPropertyListener(AudioObjectID object, const PropertyAddress& address,
                                               PropertyListener listener, PropertyListenerID& id) {
  const Lock lock(state_->loop);
  if (!state_->server->isReady() && object != kSystemObject) return status::kNotRunning;
  if (!listener) return status::kIllegalOperation;
  PropertyReader reader(*state_, object, address);
  auto value = reader.anyValue();
  if (!value) return reader.objectExists() ? status::kUnknownProperty : status::kBadObject;
  id = state_->listeners.add(object, address, std::move(listener), std::move(value));
  return kNoError;
}

OSStatus PipeWireHardware::removePropertyListener(PropertyListenerID id) {
  const Lock lock(state_->loop); // held while a listener runs
  state_->listeners.remove(id);
  return kNoError;
}

} // namespace sonvel::pipewire
