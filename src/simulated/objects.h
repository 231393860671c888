#pragma once

#include "platform/audio_types.h"

namespace sonvel::simulated {

/// An existing tap.
struct Tap {
  AudioObjectID id = kAudioObjectUnknown;
  std::string uid = {};
  TapDescription description = {};

  bool isMuted() const { return description.muteBehavior == TapMuteBehavior::muted; }
};

/// An existing aggregate device.
struct Aggregate {
  AudioObjectID id = kAudioObjectUnknown;
  AggregateDeviceDescription description = {};
};

/// An existing IOProc; it exists while its block is kept.
struct IOProc {
  IOProcID id = 0;
  AudioObjectID device = kAudioObjectUnknown;
  IOQueue queue = {};
  bool isStarted = false;
};

} // namespace sonvel::simulated
