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

[[gnu::always_inline]] inline void scaleOneByOne(float gain, const float* in, float* out, std::size_t count,
                                                 float& peak) noexcept {
  for (std::size_t k = 0; k < count; ++k) {
    const float sample = in[k];
    out[k] = gain * sample;
    raise(peak, std::fabs(sample));
  }
}

/// Two accumulators for the peaks, so that comparisons do not wait for each other.
template <std::size_t kBytes> struct Peaks {
  typename Vector<kBytes>::Floats even{};
  typename Vector<kBytes>::Floats odd{};
};

template <std::size_t kBytes>
[[gnu::always_inline]] inline void scaleByVectors(const typename Vector<kBytes>::Floats& gains,
                                                  const float* in, float* out, std::size_t count,
                                                  Peaks<kBytes>& peaks) noexcept {
  using Floats = typename Vector<kBytes>::Floats;
  constexpr std::size_t kLanes = Vector<kBytes>::kLanes;

  // The first and last vectors are read before anything is written. They may overlap the vectors between
  // them, so those can start aligned in `out` and have whole length, even if `in` equals `out`.
  Floats first;
  Floats last;
  load(first, in);
  load(last, in + count - kLanes);
  Floats samples;
  Floats nextSamples;
  const std::size_t misaligned = reinterpret_cast<std::uintptr_t>(out) / sizeof(float) % kLanes;
  std::size_t k = misaligned == 0 ? 0 : kLanes - misaligned;
  for (; k + 2 * kLanes <= count; k += 2 * kLanes) {
    load(samples, in + k);
    load(nextSamples, in + k + kLanes);
    scaleVector<kBytes>(gains, samples, out + k, peaks.even);
    scaleVector<kBytes>(gains, nextSamples, out + k + kLanes, peaks.odd);
  }
  if (k + kLanes <= count) {
    load(samples, in + k);
    scaleVector<kBytes>(gains, samples, out + k, peaks.even);
    k += kLanes;
  }
  if (misaligned != 0) scaleVector<kBytes>(gains, first, out, peaks.odd);
  if (k < count) scaleVector<kBytes>(gains, last, out + count - kLanes, peaks.even);
}

template <std::size_t kBytes>
[[gnu::always_inline]] inline void renderByVectors(const RealtimeMixBox& mix, MixMetrics& metrics,
                                                   const AudioBufferList& input,
                                                   AudioBufferList& output) noexcept {
  using Floats = typename Vector<kBytes>::Floats;
  constexpr std::size_t kLanes = Vector<kBytes>::kLanes;
  const float gain = mix.effectiveGain();
  const Floats gains = gain - Floats{}; // minus zero, because adding +0.0 would change -0.0 to +0.0
  const std::size_t inCount = input.buffers.size();
  const std::size_t outCount = output.buffers.size();
  const std::size_t pairCount = inCount < outCount ? inCount : outCount;
  Peaks<kBytes> peaks;
  float peak = 0.0F; // of buffers shorter than a vector
  for (std::size_t i = 0; i < pairCount; ++i) {
    const AudioBuffer& from = input.buffers[i];
    AudioBuffer& to = output.buffers[i];
    if (from.data == nullptr || to.data == nullptr) continue;
    const std::uint32_t sizeBytes = from.sizeBytes < to.sizeBytes ? from.sizeBytes : to.sizeBytes;
    const std::uint32_t count = sizeBytes / sizeof(float);
    const auto* in = static_cast<const float*>(from.data);
    auto* out = static_cast<float*>(to.data);
    if (count < kLanes)
      scaleOneByOne(gain, in, out, count, peak);
    else
      scaleByVectors<kBytes>(gains, in, out, count, peaks);
    to.writtenBytes = count * sizeof(float);
  }
  raise(peaks.even, peaks.odd);
  spreadLargest<kLanes / 2>(peaks.even, std::make_index_sequence<kLanes>{});
  raise(peak, static_cast<float>(peaks.even[0]));
  metrics.recordCycle(static_cast<std::int32_t>(inCount), static_cast<std::int32_t>(outCount), peak);
}

} // namespace

void renderCycle(const RealtimeMixBox& mix, MixMetrics& metrics, const AudioBufferList& input,
                 AudioBufferList& output) noexcept {
  renderByVectors<16>(mix, metrics, input, output);
}

#if defined(__x86_64__)
[[gnu::target("avx2")]] void renderCycleAvx2(const RealtimeMixBox& mix, MixMetrics& metrics,
                                             const AudioBufferList& input, AudioBufferList& output) noexcept {
  renderByVectors<32>(mix, metrics, input, output);
}
#endif

} // namespace sonvel
