#pragma once

#include "platform/audio_properties.h"
#include "platform/audio_types.h"

#include <optional>

namespace sonvel::simulated {

/// The calls of AudioHardware.
enum class Call {
  getPropertyDataSize,
  getPropertyData, ///< numbers and lists
  getPropertyText, ///< getPropertyData of a string
  hasProperty,
  isPropertySettable,
  setPropertyData,
  beginConfiguration,
  commitConfiguration, ///< on failure the configuration ends with that status
  createProcessTap,
  destroyProcessTap,
  createAggregateDevice,
  destroyAggregateDevice,
  createIOProcID,
  destroyIOProcID,
  deviceStart,
  deviceStop,
};

/// One recorded call with its answer.
struct HardwareCall {
  Call call = Call::getPropertyDataSize;
  AudioObjectID object = kAudioObjectUnknown;               ///< called on, or returned by a creating call
  PropertyAddress address = {};                             ///< for property calls
  IOProcID ioProc = 0;                                      ///< passed to or returned by the call
  std::optional<TapDescription> tap = {};                   ///< for createProcessTap
  std::optional<AggregateDeviceDescription> aggregate = {}; ///< for createAggregateDevice
  std::optional<IOQueue> queue = {};                        ///< for createIOProcID
  OSStatus status = kNoError;                               ///< for hasProperty: kUnknownProperty if missing

  bool operator==(const HardwareCall&) const = default;
};

} // namespace sonvel::simulated
