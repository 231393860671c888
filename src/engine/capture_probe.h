#pragma once

#include "engine/mix_metrics.h"
#include "platform/audio_hardware.h"

#include <memory>

namespace sonvel {

/// Listens to one process without changing what is heard of it, from start() on until it is destroyed. Blocks
/// as the audio system does.
class CaptureProbe {
 public:
  /// `hardware` and `queue` outlive the probe.
  CaptureProbe(AudioHardware& hardware, const IOQueue& queue);

  /// Takes down what was set up, last things first, whatever the audio system says.
  ~CaptureProbe();

  CaptureProbe(const CaptureProbe&) = delete;
  CaptureProbe& operator=(const CaptureProbe&) = delete;

  /// Sets up tap, aggregate device on the default output device, and IOProc, and starts it. False if any of
  /// it fails. Once.
  bool start(AudioObjectID process);

  /// Whether a sample that is not silent has arrived so far.
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
