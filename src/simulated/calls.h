#pragma once

#include "platform/audio_properties.h"
#include "platform/audio_types.h"

#include <iosfwd>
#include <optional>

namespace sonvel::simulated {

/// The calls of AudioHardware, one for each.
enum class Call {
  getPropertyDataSize,
  getPropertyData, ///< of a number or a list
  getPropertyText, ///< getPropertyData of a string
  hasProperty,
  isPropertySettable,
  setPropertyData,
  beginConfiguration,
  commitConfiguration, ///< fails by ending the configuration with that status
  createProcessTap,
  destroyProcessTap,
  createAggregateDevice,
  destroyAggregateDevice,
  createIOProcID,
  destroyIOProcID,
  deviceStart,
  deviceStop,
};

/// The name of the method.
const char* name(Call call) noexcept;

std::ostream& operator<<(std::ostream& out, Call call);

/// One call as it was made and answered.
struct LoggedCall {
  Call call = Call::getPropertyDataSize;
  AudioObjectID object = kAudioObjectUnknown; ///< called on; for a creating call what it gave, if anything
  PropertyAddress address = {};               ///< of a property call
  IOProcID ioProc = 0;                        ///< given to or by a call that has one
  std::optional<TapDescription> tap = {};     ///< of createProcessTap
  std::optional<AggregateDeviceDescription> aggregate = {}; ///< of createAggregateDevice
  std::optional<IOQueue> queue = {};                        ///< of createIOProcID
  OSStatus status = kNoError; ///< of hasProperty: kUnknownProperty if there is none

  bool operator==(const LoggedCall&) const = default;
};

/// An order to let calls fail. A call that fails does nothing: what it should have destroyed stays, what it
/// should have stopped runs. hasProperty fails by answering no.
struct Failure {
  std::optional<Call> call = {}; ///< none: any call

  /// What the call returns. With kNoError it claims success and still does nothing: a creating call gives no
  /// object, a string is a null reference.
  OSStatus status = status::kUnspecified;

  /// Only calls on this object; for createProcessTap those that name it among the processes.
  std::optional<AudioObjectID> object = {};

  std::optional<std::uint32_t> selector = {}; ///< only property calls with this selector

  unsigned after = 0; ///< how many matching calls pass before the first that fails

  std::optional<unsigned> times = 1; ///< how many then fail; none: all, until cleared
};

} // namespace sonvel::simulated
