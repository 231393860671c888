#pragma once

#include "audio/record_hash.h"
#include "platform/audio_hardware.h"

namespace sonvel {

/// A device that can play sound.
struct AudioOutputDevice {
  AudioObjectID deviceID = kAudioObjectUnknown;
  std::string uid;  ///< identifies the device, the same across restarts
  std::string name; ///< the displayed name; the UID if the name is unreadable

  const std::string& id() const noexcept { return uid; }

  bool operator==(const AudioOutputDevice&) const = default;
};

// Any thread except an IOProc's; all block as the audio system does. A failed read gives none or an empty
// list, a failed write gives `false`. Volumes are scalars from 0.0 to 1.0; elements as in audio_properties.h.

/// All devices that can play sound, without this program's aggregate devices, in the system's order.
std::vector<AudioOutputDevice> enumerateOutputDevices(AudioHardware& hardware);

bool deviceHasOutputStreams(AudioHardware& hardware, AudioObjectID device);

/// None if the system has no default output device.
std::optional<AudioObjectID> defaultOutputDeviceID(AudioHardware& hardware);

/// None if the system has no default output device, or it has no UID.
std::optional<std::string> defaultOutputDeviceUID(AudioHardware& hardware);

/// The volume of the default output device; the mean of its first two channels if it has no volume for the
/// whole device. None if no volume is readable.
std::optional<float> readMasterVolume(AudioHardware& hardware);

/// Sets the volume of the default output device, clamped to its range. False if nothing could be written.
bool writeMasterVolume(AudioHardware& hardware, float volume);

/// The volume of one element of a device; none if the element has none.
std::optional<float> deviceVolume(AudioHardware& hardware, AudioObjectID device, std::uint32_t element);

/// Sets the volume of one element of a device. False if the element has no settable volume.
bool setDeviceVolume(AudioHardware& hardware, AudioObjectID device, std::uint32_t element, float volume);

} // namespace sonvel

template <> struct std::hash<sonvel::AudioOutputDevice> {
  std::size_t operator()(const sonvel::AudioOutputDevice& device) const noexcept {
    return sonvel::recordHash(device.deviceID, device.uid, device.name);
  }
};
