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

/// One sample for each ear.
struct Frame {
  float left = 0.0F;
  float right = 0.0F;

  bool operator==(const Frame&) const = default;
};

/// What a process plays, by the number of the frame since the simulation began. Must be a pure function.
using Signal = std::function<Frame(std::uint64_t frame)>;

/// The same tone on both sides, with phase 0 at frame 0.
Signal sineSignal(double frequencyHz, float amplitude);

/// A process to simulate.
struct ProcessScript {
  std::int32_t pid = 0;
  std::optional<std::string> bundleID = {}; ///< none reads as a null reference
  bool isPlaying = true;
  std::vector<Signal> streams = {};          ///< mixed; empty plays silence
  std::vector<Signal> fixedStreams = {};     ///< streams that nobody may move: no tap takes them
  std::optional<std::string> outputUID = {}; ///< device it was sent to; none: it follows the default device

  AudioObjectID objectID = kAudioObjectUnknown; ///< 0: one is allotted
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

  AudioObjectID objectID = kAudioObjectUnknown; ///< 0: one is allotted
};

} // namespace sonvel::simulated
