#pragma once

#include "engine/mix_metrics.h"
#include "platform/audio_hardware.h"

#include <memory>

namespace sonvel {

/// Listens to one process without changing its sound, from start() until destruction. Blocks as the audio
/// system does.
class CaptureProbe {
 public:
  /// `hardware` and `queue` outlive the probe.
  CaptureProbe(AudioHardware& hardware, const IOQueue& queue);

  /// Removes what start() created, in reverse order, ignoring errors.
  ~CaptureProbe();

  CaptureProbe(const CaptureProbe&) = delete;
  CaptureProbe& operator=(const CaptureProbe&) = delete;

  /// Creates a tap, an aggregate device on the default output device and an IOProc, and starts it. False if
  /// any step fails. Call once.
  bool start(AudioObjectID process);

  /// Whether a non-silent sample has arrived.
  bool hasHeardSomething() const noexcept { return metrics_->cycles() >= 1 && metrics_->inPeak() > 0.0F; }

 private:
  bool createTap(AudioObjectID process);
  bool createAggregateDevice();
  bool installIOProc();

  AudioHardware& hardware_;
  const IOQueue& queue_;
  const std::shared_ptr<MixMetrics> metrics_ = std::make_shared<MixMetrics>();
  AudioObjectID tap_ = kAudioObjectUnknown;
  AudioObjectID aggregate_ = kAudioObjectUnknown;
  IOProcID ioProc_ = 0;
  bool isStarted_ = false;
};

} // namespace sonvel
