#include "engine/render_callback_realtime.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

namespace sonvel {

namespace {

// Vectors are passed by reference and always inlined: passing them by value would need registers that only
// some of the functions below may use.

template <std::size_t kBytes> struct Vector {
  using Floats [[gnu::vector_size(kBytes)]] = float;
  using Bits [[gnu::vector_size(kBytes)]] = std::int32_t;

  static constexpr std::size_t kLanes = kBytes / sizeof(float);
};

/// One instruction. With the operands in this order a NaN in `values` is ignored.
template <typename Floats>
[[gnu::always_inline]] inline void raise(Floats& peaks, const Floats& values) noexcept {
  peaks = values > peaks ? values : peaks;
}

/// Spreads the largest lane to all lanes; each step compares lanes `kDistance` apart.
template <std::size_t kDistance, typename Floats, std::size_t... kLane>
[[gnu::always_inline]] inline void spreadLargest(Floats& peaks,
                                                 std::index_sequence<kLane...> lanes) noexcept {
  if constexpr (kDistance > 0) {
    const Floats turned = __builtin_shufflevector(peaks, peaks, ((kLane + kDistance) % lanes.size())...);
    raise(peaks, turned);
    spreadLargest<kDistance / 2>(peaks, lanes);
  }
}

template <typename Floats>
[[gnu::always_inline]] inline void load(Floats& samples, const float* in) noexcept {
  std::memcpy(&samples, in, sizeof samples);
}

/// Processes one vector: writes it times the gain, and updates `peaks` with its magnitudes.
template <std::size_t kBytes>
[[gnu::always_inline]] inline void scaleVector(const typename Vector<kBytes>::Floats& gains,
                                               const typename Vector<kBytes>::Floats& samples, float* out,
                                               typename Vector<kBytes>::Floats& peaks) noexcept {
  using Floats = typename Vector<kBytes>::Floats;
  using Bits = typename Vector<kBytes>::Bits;
  const Bits allButSign = Bits{} + 0x7fffffff;
  const auto magnitudes = reinterpret_cast<Floats>(reinterpret_cast<Bits>(samples) & allButSign);
  const Floats scaled = gains * samples;
  std::memcpy(out, &scaled, kBytes);
  raise(peaks, magnitudes);
}

[[gnu::always_inline]] inline float scaleOneByOne(float gain, const float* in, float* out, std::size_t count,
                                                  float peak) noexcept {
  for (std::size_t k = 0; k < count; ++k) {
    const float sample = in[k];
    const float magnitude = std::fabs(sample);
    out[k] = gain * sample;
    peak = magnitude > peak ? magnitude : peak;
  }
  return peak;
}

template <std::size_t kBytes>
[[gnu::always_inline]] inline float scaleByVectors(float gain, const float* in, float* out, std::size_t count,
                                                   float peak) noexcept {
  using Floats = typename Vector<kBytes>::Floats;
  constexpr std::size_t kLanes = Vector<kBytes>::kLanes;
  if (count < kLanes) return scaleOneByOne(gain, in, out, count, peak);

  const Floats gains = gain - Floats{}; // minus zero, because adding +0.0 would change -0.0 to +0.0
  Floats peaks = peak - Floats{};
  Floats otherPeaks = peaks; // two accumulators, so that comparisons do not wait for each other

  // The first and last vectors are read before anything is written. They may overlap the vectors between
  // them, so those can start aligned in `out` and have whole length, even if `in` equals `out`.
  Floats first;
  Floats last;
  load(first, in);
  load(last, in + count - kLanes);
  Floats samples;
  Floats nextSamples;
  std::size_t k = kLanes - reinterpret_cast<std::uintptr_t>(out) / sizeof(float) % kLanes;
  for (; k + 2 * kLanes <= count; k += 2 * kLanes) {
    load(samples, in + k);
    load(nextSamples, in + k + kLanes);
    scaleVector<kBytes>(gains, samples, out + k, peaks);
    scaleVector<kBytes>(gains, nextSamples, out + k + kLanes, otherPeaks);
  }
  if (k + kLanes <= count) {
    load(samples, in + k);
    scaleVector<kBytes>(gains, samples, out + k, peaks);
  }
  scaleVector<kBytes>(gains, first, out, otherPeaks);
  scaleVector<kBytes>(gains, last, out + count - kLanes, peaks);

  raise(peaks, otherPeaks);
  spreadLargest<kLanes / 2>(peaks, std::make_index_sequence<kLanes>{});
  return peaks[0];
}

} // namespace

float scaleAndPeak(float gain, const float* in, float* out, std::size_t count, float peak) noexcept {
  return scaleByVectors<16>(gain, in, out, count, peak);
}

#if defined(__x86_64__)
[[gnu::target("avx2")]] float scaleAndPeakAvx2(float gain, const float* in, float* out, std::size_t count,
                                               float peak) noexcept {
  return scaleByVectors<32>(gain, in, out, count, peak);
}
#endif

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
