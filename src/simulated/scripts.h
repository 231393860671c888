#pragma once

#include "platform/audio_types.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace sonvel::simulated {

/// Frames per second of every simulated device and process.
inline constexpr double kSampleRateHz = 48'000.0;

/// One stereo sample.
struct Frame {
  float left = 0.0F;
  float right = 0.0F;

  bool operator==(const Frame&) const = default;
};

/// The sound of a process, by frame number since the simulation began. Must be a pure function.
using Signal = std::function<Frame(std::uint64_t frame)>;

/// The same tone on both channels, with phase 0 at frame 0.
Signal sineSignal(double frequencyHz, float amplitude);

/// A process to simulate.
struct ProcessScript {
  std::int32_t pid = 0;
  std::optional<std::string> bundleID = {}; ///< none reads as a null reference
  bool isPlaying = true;
  std::vector<Signal> streams = {};      ///< mixed; empty plays silence
  std::vector<Signal> fixedStreams = {}; ///< streams that must not be moved: no tap takes them
  /// the device chosen for it; none: it follows the default device
  std::optional<std::string> outputUID = {};
  std::uint32_t choiceSerial = 0; ///< grows each time that it is sent somewhere

  AudioObjectID objectID = kAudioObjectUnknown; ///< 0: allocate one
};

/// One volume control of a device.
struct VolumeControl {
  float scalar = 1.0F; ///< 0.0 to 1.0
  bool isSettable = true;
};

/// A device to simulate.
struct DeviceScript {
  std::string uid = {};
  std::optional<std::string> name = {}; ///< none reads as a null reference
  std::uint32_t outputStreams = 1;
  std::uint32_t inputStreams = 0;
  std::map<std::uint32_t, VolumeControl> volumes = {}; ///< by element

  AudioObjectID objectID = kAudioObjectUnknown; ///< 0: allocate one
};

} // namespace sonvel::simulated
