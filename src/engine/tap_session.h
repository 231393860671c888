#pragma once

#include "audio/audio_app.h"
#include "engine/mix_metrics.h"
#include "engine/realtime_mix_box.h"

#include <memory>
#include <vector>

namespace sonvel {

/// The audio objects of one controlled application. A handle is set as soon as its object exists and cleared
/// only when the object is gone, so that a failed removal can be resumed. Used only by the controller.
struct TapSession {
  TapSession(AudioApp controlledApp, std::optional<std::string> wantedOutputUID)
      : app(std::move(controlledApp))
      , processes{app.objectID}
      , outputUID(std::move(wantedOutputUID)) {}

  AudioApp app;                         ///< with the process that represents the application
  std::vector<AudioObjectID> processes; ///< processes of the application that the tap has
  std::optional<std::string> outputUID; ///< the requested device; none follows the default device
  std::string playingUID = {};          ///< the aggregate's real device

  /// The device chosen elsewhere at the last check; none: it follows the default.
  std::optional<std::string> chosenUID = {};

  bool isPlaying = true;  ///< some process plays
  bool isPartial = false; ///< some stream can't be controlled

  /// The error of a failed removal, which is retried. None while the session is healthy.
  std::optional<std::string> teardownFailure = {};

  AudioObjectID tapID = kAudioObjectUnknown;
  AudioObjectID aggID = kAudioObjectUnknown;
  std::optional<IOProcID> ioProc;

  // Shared with the render callback.
  const std::shared_ptr<RealtimeMixBox> mix = std::make_shared<RealtimeMixBox>();
  const std::shared_ptr<MixMetrics> metrics = std::make_shared<MixMetrics>();
};

} // namespace sonvel
