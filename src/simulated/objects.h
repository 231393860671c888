#pragma once

#include "platform/audio_types.h"

namespace sonvel::simulated {

/// A tap that exists.
struct Tap {
  AudioObjectID id = kAudioObjectUnknown;
  std::string uid = {};
  TapDescription description = {};
};

/// An aggregate device that exists.
struct Aggregate {
  AudioObjectID id = kAudioObjectUnknown;
  AggregateDeviceDescription description = {};
};

/// An IOProc that exists, which is as long as its block is kept.
struct IOProc {
  IOProcID id = 0;
  AudioObjectID device = kAudioObjectUnknown;
  IOQueue queue = {};
  bool isStarted = false;
};

} // namespace sonvel::simulated
