#pragma once

#include "platform/audio_hardware.h"

#include <optional>
#include <string>

namespace sonvel {

/// A tap, the aggregate device between it and one real output, and the IOProc on that device. A handle is set
/// as soon as its object exists and cleared only when the object is gone, so that a failed removal can be
/// resumed.
struct TapChain {
  AudioObjectID tapID = kAudioObjectUnknown;
  AudioObjectID aggID = kAudioObjectUnknown;
  std::optional<IOProcID> ioProc = {};
};

/// A failed call of the audio system.
struct FailedCall {
  std::string name; ///< of the call
  OSStatus status = kNoError;
};

// All of these block as the audio system does.

/// Creates a private aggregate device of the output device, whose clock it uses, and the chain's tap. Returns
/// the status of the call; after kNoError the chain has an aggregate device, unless the audio system returned
/// none.
OSStatus createAggregateDevice(AudioHardware& hardware, TapChain& chain, const std::string& name,
                               const std::string& outputUID, const std::string& tapUID);

/// Throws HardwareError, also if the call succeeds without returning an IOProc.
void installIOProc(AudioHardware& hardware, TapChain& chain, const IOQueue& queue, IOProcBlock block);

/// Throws HardwareError.
void startDevice(AudioHardware& hardware, const TapChain& chain);

/// Removes the chain in reverse order up to the first call that fails, which is returned. Call again to
/// resume there.
std::optional<FailedCall> takeDown(AudioHardware& hardware, TapChain& chain);

/// Removes the chain in reverse order, ignoring errors. Stops the IOProc only if `isStarted`.
void abandon(AudioHardware& hardware, const TapChain& chain, bool isStarted);

} // namespace sonvel
