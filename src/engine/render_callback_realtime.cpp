#include "engine/render_callback_realtime.h"

#include <cmath>

namespace sonvel {

float scaleAndPeak(float gain, const float* in, float* out, std::size_t count, float peak) noexcept {
  for (std::size_t k = 0; k < count; ++k) {
    const float sample = in[k];
    out[k] = gain * sample;
    const float magnitude = std::fabs(sample);
    peak = magnitude > peak ? magnitude : peak;
  }
  return peak;
}

void renderCycle(ScaleAndPeak kernel, const RealtimeMixBox& mix, MixMetrics& metrics,
                 const AudioBufferList& input, AudioBufferList& output) noexcept {
  const float gain = mix.effectiveGain();
  const std::size_t inCount = input.buffers.size();
  const std::size_t outCount = output.buffers.size();
  const std::size_t pairCount = inCount < outCount ? inCount : outCount;
  float peak = 0.0F;
  for (std::size_t i = 0; i < pairCount; ++i) {
    const AudioBuffer& from = input.buffers[i];
    const AudioBuffer& to = output.buffers[i];
    if (from.data == nullptr || to.data == nullptr) continue;
    const std::size_t sizeBytes = from.sizeBytes < to.sizeBytes ? from.sizeBytes : to.sizeBytes;
    peak = kernel(gain, static_cast<const float*>(from.data), static_cast<float*>(to.data),
                  sizeBytes / sizeof(float), peak);
  }
  metrics.recordCycle(static_cast<std::int32_t>(inCount), static_cast<std::int32_t>(outCount), peak);
}

} // namespace sonvel
