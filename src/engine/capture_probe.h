#pragma once

#include "engine/mix_metrics.h"
#include "engine/tap_chain.h"
#include "platform/clock.h"

#include <functional>
#include <memory>

namespace sonvel {

/// Listens to one process without changing what is heard of it, and answers once whether it has heard
/// something. Blocks as the audio system does.
class CaptureProbe {
 public:
  using Answer = std::function<void(std::optional<bool>)>;

  /// `hardware` and `queue` outlive the probe.
  CaptureProbe(AudioHardware& hardware, const IOQueue& queue, Answer answer);

  /// Answers false unless it has been answered.
  ~CaptureProbe();

  CaptureProbe(const CaptureProbe&) = delete;
  CaptureProbe& operator=(const CaptureProbe&) = delete;

  /// Creates a tap, an aggregate device on the default output device and an IOProc, and starts it. False if
  /// any step fails. Call once.
  bool start(AudioObjectID process);

  /// Keeps the timer that calls finish.
  void keepTimer(std::unique_ptr<Timer> timer) { timer_ = std::move(timer); }

  /// Takes down what was set up, last things first, whatever the audio system says, and answers whether a
  /// sample that is not silent has arrived.
  void finish();

 private:
  void build(AudioObjectID process);
  void takeDownAndAnswer(bool hasHeard);

  AudioHardware& hardware_;
  const IOQueue& queue_;
  Answer answer_; ///< empty once it has been answered
  std::unique_ptr<Timer> timer_;
  const std::shared_ptr<MixMetrics> metrics_ = std::make_shared<MixMetrics>();
  TapChain chain_;
  bool isStarted_ = false;
};

} // namespace sonvel
