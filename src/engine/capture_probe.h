#pragma once

#include "engine/mix_metrics.h"
#include "engine/tap_chain.h"
#include "platform/clock.h"

#include <functional>
#include <memory>

namespace sonvel {

/// Listens to one process without changing its sound, and answers once whether it has heard something. Blocks
/// as the audio system does.
class CaptureProbe {
 public:
  using Answer = std::function<void(std::optional<bool>)>;

  /// `hardware` and `queue` outlive the probe.
  CaptureProbe(AudioHardware& hardware, const IOQueue& queue, Answer answer);

  /// Answers false if it has not answered yet.
  ~CaptureProbe();

  CaptureProbe(const CaptureProbe&) = delete;
  CaptureProbe& operator=(const CaptureProbe&) = delete;

  /// Creates a tap, an aggregate device on the default output device and an IOProc, and starts it. False if
  /// any step fails. Call once.
  bool start(AudioObjectID process);

  /// Keeps the timer that calls finish().
  void keepTimer(std::unique_ptr<Timer> timer) { timer_ = std::move(timer); }

  /// Removes what start() created, in reverse order, ignoring errors, and answers whether a non-silent sample
  /// has arrived.
  void finish();

 private:
  void build(AudioObjectID process);
  void takeDownAndAnswer(bool hasHeard);

  AudioHardware& hardware_;
  const IOQueue& queue_;
  Answer answer_; ///< empty after the answer
  std::unique_ptr<Timer> timer_;
  const std::shared_ptr<MixMetrics> metrics_ = std::make_shared<MixMetrics>();
  TapChain chain_;
  bool isStarted_ = false;
};

} // namespace sonvel
