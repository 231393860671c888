#include "session/analysis.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace sonvel::session {

double decibels(double ratio) noexcept {
  return 20.0 * std::log10(ratio);
}

// One bin of a Fourier transform under a Blackman-Harris window: its side lobes are 92 dB down and its main
// lobe ends four bins from the tone.
double toneAmplitude(std::span<const float> samples, double frequency) {
  constexpr double kTurn = 2.0 * std::numbers::pi;
  const double windowStep = kTurn / static_cast<double>(samples.size());
  const double toneStep = kTurn * frequency / kSampleRate;
  std::complex<double> sum;
  double windowSum = 0.0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const auto n = static_cast<double>(i);
    const double window = 0.35875 - 0.48829 * std::cos(windowStep * n) +
                          0.14128 * std::cos(2.0 * windowStep * n) - 0.01168 * std::cos(3.0 * windowStep * n);
    sum += window * static_cast<double>(samples[i]) * std::polar(1.0, -toneStep * n);
    windowSum += window;
  }
  return windowSum > 0.0 ? 2.0 * std::abs(sum) / windowSum : 0.0;
}

std::size_t trailingZeros(std::span<const float> samples) noexcept {
  const auto last =
      std::find_if(samples.rbegin(), samples.rend(), [](float sample) { return sample != 0.0F; });
  return static_cast<std::size_t>(last - samples.rbegin());
}

std::vector<std::size_t> impulsePositions(std::span<const float> samples, float threshold) {
  std::vector<std::size_t> positions;
  for (std::size_t i = 0; i < samples.size(); ++i)
    if (std::abs(samples[i]) > threshold) positions.push_back(i);
  return positions;
}

std::vector<CounterFault> counterFaults(std::span<const float> samples, double scale) {
  std::vector<CounterFault> faults;
  bool counting = false;
  long previous = 0;
  std::size_t silent = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (samples[i] == 0.0F) {
      ++silent;
      continue;
    }
    const long count = std::lround(static_cast<double>(samples[i]) / scale * kCounterPeriod) - 1;
    // the nearer of the two ways round, from half a period back to half a period on
    long lost = (count - previous - 1) % kCounterPeriod;
    if (lost > kCounterPeriod / 2) lost -= kCounterPeriod;
    if (lost < -kCounterPeriod / 2) lost += kCounterPeriod;
    if (counting && (lost != 0 || silent != 0))
      faults.push_back({.index = i, .lost = lost, .silent = silent});
    counting = true;
    previous = count;
    silent = 0;
  }
  return faults;
}

} // namespace sonvel::session
