// The real-time thread runs this file: no allocation, lock, log, exception or system call.
#include "engine/probe_callback_realtime.h"

namespace sonvel {

void probeCycle(MixMetrics& metrics, const AudioBufferList& input) noexcept {
  float peak = metrics.inPeak();
  for (const AudioBuffer& buffer : input.buffers) {
    const auto* samples = static_cast<const float*>(buffer.data);
    if (samples == nullptr) continue;
    for (std::size_t i = 0; i < buffer.sizeBytes / sizeof(float); ++i) {
      const float magnitude = samples[i] < 0.0F ? -samples[i] : samples[i];
      if (magnitude > peak) peak = magnitude; // false for NaN
    }
  }
  metrics.recordCycle(static_cast<std::int32_t>(input.buffers.size()), 0, peak);
}

} // namespace sonvel
