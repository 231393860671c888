#pragma once

#include "platform/audio_hardware.h"

#include <optional>
#include <string>

namespace sonvel {

/// A tap, the aggregate device that joins it with one real output, and the IOProc on that device. A handle is
/// set as soon as its object exists and cleared only when the object is gone, so that a chain always tells
/// what is left to undo.
struct TapChain {
  AudioObjectID tapID = kAudioObjectUnknown;
  AudioObjectID aggID = kAudioObjectUnknown;
  std::optional<IOProcID> ioProc = {};
};

/// A call of the audio system that has failed.
struct FailedCall {
  std::string name; ///< the call's
  OSStatus status = kNoError;
};

// All of these block as the audio system does.

/// The status of the call. With kNoError the chain has an aggregate device, unless the audio system has given
/// none: a device that is private, whose clock is the output device's, with the chain's tap.
OSStatus createAggregateDevice(AudioHardware& hardware, TapChain& chain, const std::string& name,
                               const std::string& outputUID, const std::string& tapUID);

/// Throws HardwareError, also if there is no IOProc although the call has succeeded.
void installIOProc(AudioHardware& hardware, TapChain& chain, const IOQueue& queue, IOProcBlock block);

/// Throws HardwareError.
void startDevice(AudioHardware& hardware, const TapChain& chain);

/// Takes the chain down, last things first, up to the first call that fails, which is returned. Called again,
/// it goes on there.
std::optional<FailedCall> takeDown(AudioHardware& hardware, TapChain& chain);

/// Takes the chain down, last things first, whatever the calls return. It is stopped only if it was started.
void abandon(AudioHardware& hardware, const TapChain& chain, bool isStarted);

} // namespace sonvel
