#pragma once

#include <span>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace sonvel {

/// Identifies one object of the audio system: the system itself, a process, a device, a tap or an aggregate.
using AudioObjectID = std::uint32_t;
inline constexpr AudioObjectID kAudioObjectUnknown = 0;

/// What every call of the audio system returns: 0 for success, otherwise an error code.
using OSStatus = std::int32_t;
inline constexpr OSStatus kNoError = 0;

/// Packs four characters big-endian into 32 bits, as selectors, scopes and some statuses are written.
constexpr std::uint32_t fourCharCode(const char (&text)[5]) noexcept {
  std::uint32_t code = 0;
  for (int i = 0; i < 4; ++i)
    code = (code << 8) | static_cast<unsigned char>(text[i]);
  return code;
}

/// The statuses that this project's back ends return. A test may script any other.
namespace status {
inline constexpr auto kNotRunning = static_cast<OSStatus>(fourCharCode("stop"));  ///< no sound server
inline constexpr auto kUnspecified = static_cast<OSStatus>(fourCharCode("what")); ///< no answer in time
inline constexpr auto kUnknownProperty = static_cast<OSStatus>(fourCharCode("who?"));
inline constexpr auto kBadPropertySize = static_cast<OSStatus>(fourCharCode("!siz"));
inline constexpr auto kIllegalOperation = static_cast<OSStatus>(fourCharCode("nope"));
inline constexpr auto kBadObject = static_cast<OSStatus>(fourCharCode("!obj"));
inline constexpr auto kBadDevice = static_cast<OSStatus>(fourCharCode("!dev"));
} // namespace status

/// Identifies a property of an object: selector, direction and channel (0 is the whole object).
struct PropertyAddress {
  std::uint32_t selector = 0;
  std::uint32_t scope = 0;
  std::uint32_t element = 0;

  auto operator<=>(const PropertyAddress&) const = default;
};

/// Whether a tapped process still plays to its own device.
enum class TapMuteBehavior : std::int32_t {
  unmuted = 0, ///< the tap only listens
  muted = 1,   ///< heard only through the program that reads the tap
};

/// What a process tap captures. The captured audio is mixed down to two channels.
struct TapDescription {
  std::vector<AudioObjectID> processes; ///< process objects whose output is mixed into the tap
  std::vector<std::string> bundleIDs;   ///< later processes with one of these IDs join
  std::string name;
  bool isPrivate = false; ///< visible only to this program
  TapMuteBehavior muteBehavior = TapMuteBehavior::unmuted;

  bool operator==(const TapDescription&) const = default;
};

/// One real device inside an aggregate device.
struct SubDevice {
  std::string uid;

  bool operator==(const SubDevice&) const = default;
};

/// One tap in an aggregate device.
struct SubTap {
  std::string uid;
  bool driftCompensation = false; ///< resample the tap to the main device's clock

  bool operator==(const SubTap&) const = default;
};

/// The parts of an aggregate device.
struct AggregateDeviceDescription {
  std::string name;
  std::string uid;
  std::string mainSubDeviceUID; ///< the device whose clock the aggregate follows
  bool isPrivate = false;       ///< visible only to this program
  bool isStacked = false;       ///< multi-output device: every sub-device plays the same
  bool tapAutoStart = false;    ///< the taps run while the aggregate runs
  std::vector<SubDevice> subDevices;
  std::vector<SubTap> taps;

  bool operator==(const AggregateDeviceDescription&) const = default;
};

/// Consecutive samples in memory.
struct AudioBuffer {
  std::uint32_t channelCount = 0;
  std::uint32_t sizeBytes = 0;
  void* data = nullptr; ///< 32-bit float samples; may be null

  /// Of an output: how much of `data` the block has written, from its start; at most `sizeBytes`. 0 when the
  /// block is called.
  std::uint32_t writtenBytes = 0;
};

/// The buffers of one direction of an I/O cycle. Buffers of an input list are read-only.
struct AudioBufferList {
  std::span<AudioBuffer> buffers;
};

/// A time on the clock of a device.
struct AudioTimeStamp {
  std::uint64_t hostTimeNanoseconds = 0; ///< the machine's monotonic clock
  std::uint64_t sampleTimeFrames = 0;    ///< frames since the device started
};

/// Called once per I/O cycle, on the queue that it was installed for. The outputs may hold anything; what the
/// block does not count in their `writtenBytes` becomes silence after the call. Real-time: must not allocate,
/// lock, log, throw or make a system call.
using IOProcBlock = std::function<void(const AudioTimeStamp& now, const AudioBufferList& input,
                                       const AudioTimeStamp& inputTime, AudioBufferList& output,
                                       const AudioTimeStamp& outputTime)>;

/// Identifies an installed IOProc; 0 is none.
using IOProcID = std::uint64_t;

/// Called when a property has changed.
using PropertyListener = std::function<void(AudioObjectID object, const PropertyAddress& address)>;

/// Identifies a property listener; 0 is none.
using PropertyListenerID = std::uint64_t;

/// How urgent a queue's work is to the user.
enum class QualityOfService { utility, userInitiated, userInteractive };

/// The serial queue on which an audio system calls IOProc blocks: blocks of one queue never run at the same
/// time.
struct IOQueue {
  std::string label;
  QualityOfService qualityOfService = QualityOfService::userInteractive;

  bool operator==(const IOQueue&) const = default;
};

} // namespace sonvel
