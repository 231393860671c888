#pragma once

#include "audio/audio_app.h"
#include "engine/mix_metrics.h"
#include "engine/realtime_mix_box.h"

#include <memory>

namespace sonvel {

/// What exists in the audio system for one controlled application. A handle is set as soon as its object
/// exists and cleared only when the object is gone, so that a session always tells what is left to undo.
/// Touched by the controller alone.
struct TapSession {
  TapSession(AudioApp controlledApp, std::optional<std::string> wantedOutputUID)
      : app(std::move(controlledApp))
      , outputUID(std::move(wantedOutputUID)) {}

  const AudioApp app;
  const std::optional<std::string> outputUID; ///< the device asked for; none follows the default device

  AudioObjectID tapID = kAudioObjectUnknown;
  AudioObjectID aggID = kAudioObjectUnknown;
  std::optional<IOProcID> ioProc;

  // Shared with the render callback.
  const std::shared_ptr<RealtimeMixBox> mix = std::make_shared<RealtimeMixBox>();
  const std::shared_ptr<MixMetrics> metrics = std::make_shared<MixMetrics>();
};

} // namespace sonvel
