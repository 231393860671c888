#pragma once

#include <span>

#include <cstddef>
#include <vector>

/// Pure functions over recorded samples of one channel.
namespace sonvel::session {

inline constexpr int kSampleRate = 48000;     // Hz
inline constexpr long kCounterPeriod = 32768; // frames after which Signal::counter begins again

/// The level of ratio in dB; negative infinity for 0.
[[nodiscard]] double decibels(double ratio) noexcept;

/// The peak amplitude of the tone of this frequency (Hz), whatever else sounds: other tones at least
/// 8 * kSampleRate / samples.size() Hz away disturb it by less than 0.0005 dB at equal level. At least 1024
/// samples.
[[nodiscard]] double toneAmplitude(std::span<const float> samples, double frequency);

/// How many samples at the end are exactly zero.
[[nodiscard]] std::size_t trailingZeros(std::span<const float> samples) noexcept;

/// Indices of the samples whose magnitude is above the threshold.
[[nodiscard]] std::vector<std::size_t> impulsePositions(std::span<const float> samples, float threshold);

/// A place where Signal::counter did not go on from one sample to the next.
struct CounterFault {
  std::size_t index = 0;  // of the sample after the fault
  long lost = 0;          // samples that never came; negative: samples that came again
  std::size_t silent = 0; // zeros in between

  friend bool operator==(const CounterFault&, const CounterFault&) = default;
};

/// The faults in a recording of Signal::counter that was played at this amplitude and gain (their product is
/// scale). Zeros before the first and after the last counted sample are no fault.
[[nodiscard]] std::vector<CounterFault> counterFaults(std::span<const float> samples, double scale);

} // namespace sonvel::session
