#pragma once

#include "audio/audio_app.h"
#include "engine/mix_metrics.h"
#include "engine/realtime_mix_box.h"

#include <memory>
#include <vector>

namespace sonvel {

/// What exists in the audio system for one controlled application. A handle is set as soon as its object
/// exists and cleared only when the object is gone, so that a session always tells what is left to undo.
/// Touched by the controller alone.
struct TapSession {
  TapSession(AudioApp controlledApp, std::optional<std::string> wantedOutputUID)
      : app(std::move(controlledApp))
      , processes{app.objectID}
      , outputUID(std::move(wantedOutputUID)) {}

  AudioApp app;                         ///< with the process that stands for the application
  std::vector<AudioObjectID> processes; ///< of the application, as far as the tap was told of them
  std::optional<std::string> outputUID; ///< the device asked for; none follows the default device
  std::string playingUID = {};          ///< the device that the aggregate device is made of

  /// The device that the application was sent to elsewhere, as it was last looked at; none: it follows.
  std::optional<std::string> chosenUID = {};

  bool isPlaying = true;  ///< some process plays
  bool isPartial = false; ///< some stream can't be controlled

  /// Why taking it down has failed, which is tried again. None while it is healthy.
  std::optional<std::string> teardownFailure = {};

  AudioObjectID tapID = kAudioObjectUnknown;
  AudioObjectID aggID = kAudioObjectUnknown;
  std::optional<IOProcID> ioProc;

  // Shared with the render callback.
  const std::shared_ptr<RealtimeMixBox> mix = std::make_shared<RealtimeMixBox>();
  const std::shared_ptr<MixMetrics> metrics = std::make_shared<MixMetrics>();
};

} // namespace sonvel
