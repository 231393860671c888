#pragma once

#include "platform/audio_properties.h"
#include "platform/audio_types.h"

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

/// One call as it was made and answered.
struct HardwareCall {
  Call call = Call::getPropertyDataSize;
  AudioObjectID object = kAudioObjectUnknown; ///< called on; for a creating call what it gave, if anything
  PropertyAddress address = {};               ///< of a property call
  IOProcID ioProc = 0;                        ///< given to or by a call that has one
  std::optional<TapDescription> tap = {};     ///< of createProcessTap
  std::optional<AggregateDeviceDescription> aggregate = {}; ///< of createAggregateDevice
  std::optional<IOQueue> queue = {};                        ///< of createIOProcID
  OSStatus status = kNoError; ///< of hasProperty: kUnknownProperty if there is none

  bool operator==(const HardwareCall&) const = default;
};

} // namespace sonvel::simulated
