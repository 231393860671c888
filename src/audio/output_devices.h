#pragma once

#include "audio/record_hash.h"
#include "platform/audio_hardware.h"

namespace sonvel {

/// One device that can play sound.
struct AudioOutputDevice {
  AudioObjectID deviceID = kAudioObjectUnknown;
  std::string uid;  ///< the device's identity, the same across restarts
  std::string name; ///< what the user sees; the UID where the device has no readable name

  const std::string& id() const noexcept { return uid; }

  bool operator==(const AudioOutputDevice&) const = default;
};

// Any thread but an IOProc's; all block as the audio system does. A failed read is an absence, a failed write
// is `false`. Volumes are scalars from 0.0 to 1.0; elements are those of audio_properties.h.

/// Every device that can play sound, without the aggregate devices of this program, in the system's order.
std::vector<AudioOutputDevice> enumerateOutputDevices(AudioHardware& hardware);

bool deviceHasOutputStreams(AudioHardware& hardware, AudioObjectID device);

/// None if the system has no default output device.
std::optional<AudioObjectID> defaultOutputDeviceID(AudioHardware& hardware);

/// None if the system has no default output device, or that has no UID.
std::optional<std::string> defaultOutputDeviceUID(AudioHardware& hardware);

/// The volume of the default output device, or the mean of its first two channels where it has none as a
/// whole. None if it has no volume that can be read.
std::optional<float> readMasterVolume(AudioHardware& hardware);

/// Sets the volume of the default output device, cut to its range. False if nothing could be written.
bool writeMasterVolume(AudioHardware& hardware, float volume);

/// The volume of one element of a device; none if the element has none.
std::optional<float> deviceVolume(AudioHardware& hardware, AudioObjectID device, std::uint32_t element);

/// Sets the volume of one element of a device. False if the element has none that can be set.
bool setDeviceVolume(AudioHardware& hardware, AudioObjectID device, std::uint32_t element, float volume);

} // namespace sonvel

template <> struct std::hash<sonvel::AudioOutputDevice> {
  std::size_t operator()(const sonvel::AudioOutputDevice& device) const noexcept {
    return sonvel::recordHash(device.deviceID, device.uid, device.name);
  }
};
