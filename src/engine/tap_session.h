#pragma once

#include "audio/audio_app.h"
#include "engine/mix_metrics.h"
#include "engine/realtime_mix_box.h"
#include "engine/tap_chain.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sonvel {

/// Where an application was sent elsewhere.
struct ChoiceElsewhere {
  std::optional<std::string> uid = {}; ///< of the device; none: it follows the default device
  std::uint32_t serial = 0;            ///< property::kProcessChoiceSerial
};

/// One controlled application and its audio objects. Used only by the controller.
struct TapSession : TapChain {
  TapSession(AudioApp controlledApp, std::optional<std::string> wantedOutputUID)
      : app(std::move(controlledApp))
      , processes{app.objectID}
      , outputUID(std::move(wantedOutputUID)) {}

  AudioApp app;                         ///< with the process that represents the application
  std::vector<AudioObjectID> processes; ///< processes of the application that the tap has
  std::optional<std::string> outputUID; ///< the requested device; none follows the default device
  std::string playingUID = {};          ///< the aggregate's real device

  ChoiceElsewhere choice = {}; ///< the last one

  bool isPlaying = true;  ///< some process plays
  bool isPartial = false; ///< some stream can't be controlled

  /// The error of a failed removal, which is retried. None while the session is healthy.
  std::optional<std::string> teardownFailure = {};

  // Shared with the render callback.
  const std::shared_ptr<RealtimeMixBox> mix = std::make_shared<RealtimeMixBox>();
  const std::shared_ptr<MixMetrics> metrics = std::make_shared<MixMetrics>();
};

} // namespace sonvel
