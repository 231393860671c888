#pragma once

#include <atomic>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>

namespace sonvel::session {

/// Makes a signal sample by sample.
class SignalSource {
 public:
  enum class Kind { tone, impulses, counter, silence };

  Kind kind = Kind::tone;
  int frequency = 1000; // Hz
  std::uint64_t period = 48000;
  int rate = 48000; // Hz
  std::atomic<float> amplitude = 0.5F;

  /// The next sample; it is played at this position of the graph's clock. Real-time safe.
  [[nodiscard]] float next(std::uint64_t position) noexcept {
    const std::uint64_t n = count_++;
    return amplitude.load(std::memory_order_relaxed) * shape(n, position);
  }

 private:
  static constexpr std::uint64_t kCounterPeriod = 32768;

  [[nodiscard]] float shape(std::uint64_t n, std::uint64_t position) const noexcept {
    switch (kind) {
    case Kind::tone: {
      // both are whole numbers, so that the phase never drifts
      const std::uint64_t inSecond = n % static_cast<std::uint64_t>(rate);
      const double turns = static_cast<double>(inSecond) * frequency / rate;
      return static_cast<float>(std::sin(2.0 * std::numbers::pi * turns));
    }
    case Kind::impulses:
      return position % period == 0 ? 1.0F : 0.0F;
    case Kind::counter:
      return static_cast<float>(n % kCounterPeriod + 1) / static_cast<float>(kCounterPeriod);
    case Kind::silence:
      break;
    }
    return 0.0F;
  }

  std::uint64_t count_ = 0;
};

} // namespace sonvel::session
