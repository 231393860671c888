#include "audio/output_devices.h"

#include "audio/app_naming.h"
#include "audio/object_access.h"
#include "text/display_name.h"

#include <algorithm>

namespace sonvel {
namespace {

constexpr PropertyAddress volumeAddress(std::uint32_t element) noexcept {
  return {property::kDeviceVolumeScalar, scope::kOutput, element};
}

std::optional<std::string> deviceName(AudioHardware& hardware, AudioObjectID device) {
  auto name = cfStringProp(hardware, device, property::kObjectName);
  // A new device may not have its name yet at the first read.
  if (!name) name = cfStringProp(hardware, device, property::kObjectName);
  return name;
}

} // namespace

std::vector<AudioOutputDevice> enumerateOutputDevices(AudioHardware& hardware) {
  std::vector<AudioOutputDevice> devices;
  for (const auto device : systemObjectList(hardware, property::kDevices)) {
    if (!deviceHasOutputStreams(hardware, device)) continue;
    auto uid = cfStringProp(hardware, device, property::kDeviceUID);
    if (!uid) continue;
    auto name = deviceName(hardware, device).value_or(*uid);
    if (AppNaming::isOwnAggregateDevice(name)) continue;
    auto shown = displayName(name);
    devices.push_back({device, *std::move(uid), shown.empty() ? "Device" : std::move(shown)});
  }
  return devices;
}

bool deviceHasOutputStreams(AudioHardware& hardware, AudioObjectID device) {
  std::uint32_t sizeBytes = 0;
  const auto status = hardware.getPropertyDataSize(
      device, {property::kDeviceStreams, scope::kOutput, kElementMain}, sizeBytes);
  return status == kNoError && sizeBytes > 0;
}

std::optional<AudioObjectID> defaultOutputDeviceID(AudioHardware& hardware) {
  const auto device =
      scalarProp<AudioObjectID>(hardware, kSystemObject, property::kDefaultOutputDevice, scope::kGlobal);
  if (device == kAudioObjectUnknown) return std::nullopt;
  return device;
}

std::optional<std::string> defaultOutputDeviceUID(AudioHardware& hardware) {
  const auto device = defaultOutputDeviceID(hardware);
  if (!device) return std::nullopt;
  return cfStringProp(hardware, *device, property::kDeviceUID);
}

std::optional<float> readMasterVolume(AudioHardware& hardware) {
  const auto device = defaultOutputDeviceID(hardware);
  if (!device) return std::nullopt;
  if (const auto whole = deviceVolume(hardware, *device, kElementMain)) return whole;
  const auto left = deviceVolume(hardware, *device, kElementLeft);
  const auto right = deviceVolume(hardware, *device, kElementRight);
  if (left && right) return (*left + *right) * 0.5F;
  return left ? left : right;
}

bool writeMasterVolume(AudioHardware& hardware, float volume) {
  const auto device = defaultOutputDeviceID(hardware);
  if (!device) return false;
  const auto inRange = std::clamp(volume, 0.0F, 1.0F);
  if (setDeviceVolume(hardware, *device, kElementMain, inRange)) return true;
  const bool left = setDeviceVolume(hardware, *device, kElementLeft, inRange);
  const bool right = setDeviceVolume(hardware, *device, kElementRight, inRange);
  return left || right;
}

std::optional<float> deviceVolume(AudioHardware& hardware, AudioObjectID device, std::uint32_t element) {
  const auto address = volumeAddress(element);
  if (!hardware.hasProperty(device, address)) return std::nullopt;
  return numberProp<float>(hardware, device, address);
}

bool setDeviceVolume(AudioHardware& hardware, AudioObjectID device, std::uint32_t element, float volume) {
  const auto address = volumeAddress(element);
  if (!hardware.hasProperty(device, address)) return false;
  bool isSettable = false;
  if (hardware.isPropertySettable(device, address, isSettable) != kNoError || !isSettable) return false;
  return hardware.setPropertyData(device, address, std::as_bytes(std::span(&volume, 1))) == kNoError;
}

} // namespace sonvel
