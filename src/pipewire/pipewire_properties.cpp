#include "pipewire/device_volume.h"
#include "pipewire/hardware_session.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace sonvel::pipewire {

namespace {

using Lock = LoopThread::Lock;

template <class Value> std::vector<std::byte> bytesOf(const Value& value) {
  std::vector<std::byte> bytes(sizeof(Value));
  std::memcpy(bytes.data(), &value, sizeof(Value));
  return bytes;
}

std::vector<std::byte> bytesOf(const std::vector<AudioObjectID>& values) {
  std::vector<std::byte> bytes(values.size() * sizeof(AudioObjectID));
  if (!values.empty()) std::memcpy(bytes.data(), values.data(), bytes.size());
  return bytes;
}

} // namespace

/// Reads the properties of each kind of object from the graph. None means that there is no such property.
class PipeWireHardware::PropertyReader {
 public:
  PropertyReader(Session& session, AudioObjectID object, const PropertyAddress& address)
      : session_(session)
      , object_(object)
      , address_(address) {}

  /// A number or a list.
  std::optional<std::vector<std::byte>> data() {
    if (object_ == kSystemObject) return systemData();
    if (const AudioClient* client = session_.clientOf(object_)) return processData(*client);
    if (session_.aggregates.contains(object_))
      return isStreams() ? bytesOf(std::uint32_t{object_}) : noData();
    if (const auto device = session_.deviceNode(object_)) return deviceData(*device);
    return noData();
  }

  /// A string; the inner optional is a null reference.
  std::optional<std::optional<std::string>> text() {
    if (session_.clientOf(object_) != nullptr) return processText();
    if (const auto aggregate = session_.aggregates.find(object_); aggregate != session_.aggregates.end()) {
      if (address_.selector == property::kDeviceUID) return aggregate->second.description.uid;
      if (address_.selector == property::kObjectName) return aggregate->second.description.name;
    }
    if (const auto device = session_.deviceNode(object_)) {
      const Node& node = session_.graph.nodes.at(*device);
      if (address_.selector == property::kDeviceUID) return node.name;
      if (address_.selector == property::kObjectName)
        return node.description.empty() ? std::optional<std::string>() : node.description;
    }
    const auto& taps = session_.reconciler.desired().taps;
    if (const auto tap = taps.find(object_); tap != taps.end() && address_.selector == property::kTapUID)
      return tap->second.nodeName;
    return std::nullopt;
  }

  /// Whether there is an object of that ID now.
  bool objectExists() const {
    return object_ == kSystemObject || session_.clientOf(object_) != nullptr ||
           session_.aggregates.contains(object_) || session_.deviceNode(object_) ||
           session_.reconciler.desired().taps.contains(object_);
  }

 private:
  static std::optional<std::vector<std::byte>> noData() { return std::nullopt; }

  bool isStreams() const {
    return address_.selector == property::kDeviceStreams && address_.scope == scope::kOutput;
  }

  std::optional<std::vector<std::byte>> systemData() {
    if (address_.selector == property::kProcessObjectList) return bytesOf(session_.processObjects());
    if (address_.selector == property::kDevices) return bytesOf(session_.deviceObjects());
    if (address_.selector != property::kDefaultOutputDevice) return std::nullopt;
    const auto& name = session_.graph.defaultSinkName;
    const bool isThere = !name.empty() && session_.graph.nodeNamed(name);
    return bytesOf(isThere ? session_.devices.idOf(name) : kAudioObjectUnknown);
  }

  std::optional<std::vector<std::byte>> processData(const AudioClient& client) const {
    if (address_.selector == property::kProcessIsRunningOutput)
      return bytesOf(std::uint32_t{session_.isRunningOutput(object_) ? 1U : 0U});
    if (address_.selector != property::kProcessPID) return std::nullopt;
    return bytesOf(client.processID);
  }

  /// The bundle identifier is the one property whose value is not in the graph: see getPropertyData.
  std::optional<std::optional<std::string>> processText() const {
    if (address_.selector != property::kProcessBundleID) return std::nullopt;
    return std::optional<std::string>();
  }

  std::optional<std::vector<std::byte>> deviceData(GlobalID device) const {
    const bool isSink = session_.graph.nodes.at(device).kind == NodeKind::sink;
    if (address_.selector == property::kDeviceStreams)
      return isStreams() && isSink ? bytesOf(std::uint32_t{object_}) : std::vector<std::byte>();
    if (address_.selector != property::kDeviceVolumeScalar || address_.scope != scope::kOutput || !isSink)
      return std::nullopt;
    const auto scalar = volumeScalar(deviceVolumes(session_.graph, device), address_.element);
    return scalar ? std::optional(bytesOf(*scalar)) : std::nullopt;
  }

  Session& session_;
  AudioObjectID object_;
  PropertyAddress address_;
};

OSStatus PipeWireHardware::getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                               std::uint32_t& sizeBytes) {
  const Lock lock(session_->loop);
  // The two lists must be true: a program that has just come is in them.
  const bool isSystemList =
      address.selector == property::kProcessObjectList || address.selector == property::kDevices;
  if (!session_->server->isReady()) return status::kNotRunning;
  if (isSystemList)
    if (const OSStatus outcome = session_->syncWithServer(lock, deadlineFromNow()); outcome != kNoError)
      return outcome;
  PropertyReader reader(*session_, object, address);
  const auto data = reader.data();
  if (!data) return reader.objectExists() ? status::kUnknownProperty : status::kBadObject;
  sizeBytes = static_cast<std::uint32_t>(data->size());
  return kNoError;
}

OSStatus PipeWireHardware::getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                           std::uint32_t& sizeBytes, std::span<std::byte> data) {
  const Lock lock(session_->loop);
  if (!session_->server->isReady()) return status::kNotRunning;
  PropertyReader reader(*session_, object, address);
  const auto value = reader.data();
  if (!value) return reader.objectExists() ? status::kUnknownProperty : status::kBadObject;
  const bool isList = address.selector == property::kProcessObjectList ||
                      address.selector == property::kDevices || address.selector == property::kDeviceStreams;
  if (!isList && data.size() != value->size()) return status::kBadPropertySize;
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
    const Lock lock(session_->loop);
    if (!session_->server->isReady()) return status::kNotRunning;
    PropertyReader reader(*session_, object, address);
    auto value = reader.text();
    if (!value) return reader.objectExists() ? status::kUnknownProperty : status::kBadObject;
    text = std::move(*value);
    if (address.selector != property::kProcessBundleID) return kNoError;
    client = *session_->clientOf(object);
  }
  // Identifying reads files, which events must not wait for.
  text = session_->identity.bundleIdentifier(*client);
  return kNoError;
}

bool PipeWireHardware::hasProperty(AudioObjectID object, const PropertyAddress& address) {
  const Lock lock(session_->loop);
  PropertyReader reader(*session_, object, address);
  return reader.data().has_value() || reader.text().has_value();
}

OSStatus PipeWireHardware::isPropertySettable(AudioObjectID object, const PropertyAddress& address,
                                              bool& isSettable) {
  const Lock lock(session_->loop);
  if (!session_->server->isReady()) return status::kNotRunning;
  PropertyReader reader(*session_, object, address);
  if (!reader.data() && !reader.text())
    return reader.objectExists() ? status::kUnknownProperty : status::kBadObject;
  isSettable = address.selector == property::kDeviceVolumeScalar;
  return kNoError;
}

OSStatus PipeWireHardware::setPropertyData(AudioObjectID object, const PropertyAddress& address,
                                           std::span<const std::byte> data) {
  const Lock lock(session_->loop);
  if (!session_->server->isReady()) return status::kNotRunning;
  PropertyReader reader(*session_, object, address);
  if (!reader.data() && !reader.text())
    return reader.objectExists() ? status::kUnknownProperty : status::kBadObject;
  if (address.selector != property::kDeviceVolumeScalar) return status::kIllegalOperation;
  float scalar = 0.0F;
  if (data.size() != sizeof scalar) return status::kBadPropertySize;
  std::memcpy(&scalar, data.data(), sizeof scalar);
  if (!std::isfinite(scalar)) return status::kIllegalOperation;
  scalar = std::clamp(scalar, 0.0F, 1.0F);
  const auto device = session_->deviceNode(object);
  if (!device) return status::kBadObject;
  const auto volumes = withVolumeScalar(deviceVolumes(session_->graph, *device), address.element, scalar);
  setDeviceVolumes(session_->graph, *session_->server->monitor(), *device, volumes);
  return session_->syncWithServer(lock, deadlineFromNow());
}

} // namespace sonvel::pipewire
