#pragma once

#include <atomic>
#include <cstdint>

namespace sonvel {

/// What the render callback of one channel saw in its last cycle.
///
/// The render callback alone writes it, any thread may read. No call blocks, and all are real-time safe. Each
/// field is read and written indivisibly, but the fields are not a set: a peak may come from the cycle before
/// the one that was counted last.
class MixMetrics {
 public:
  MixMetrics() = default;

  /// Counts on from `cycles`, as if that many had run.
  explicit MixMetrics(std::int32_t cycles) noexcept
      : cycles_{cycles} {}

  /// Number of buffers in the last input and output list.
  std::int32_t inBufs() const noexcept { return inBufs_.load(std::memory_order_relaxed); }

  std::int32_t outBufs() const noexcept { return outBufs_.load(std::memory_order_relaxed); }

  /// Largest absolute input sample of the last cycle alone, before gain and mute; linear amplitude.
  float inPeak() const noexcept { return inPeak_.load(std::memory_order_relaxed); }

  /// Number of cycles that have run; goes on at the smallest value after the largest.
  std::int32_t cycles() const noexcept { return cycles_.load(std::memory_order_relaxed); }

  /// Counts one more cycle and replaces what is known of the one before.
  void recordCycle(std::int32_t inBufs, std::int32_t outBufs, float inPeak) noexcept {
    inBufs_.store(inBufs, std::memory_order_relaxed);
    outBufs_.store(outBufs, std::memory_order_relaxed);
    inPeak_.store(inPeak, std::memory_order_relaxed);
    // There is one writer, so the count needs no locked instruction; unsigned arithmetic wraps.
    const auto next = static_cast<std::uint32_t>(cycles()) + 1U;
    cycles_.store(static_cast<std::int32_t>(next), std::memory_order_relaxed);
  }

 private:
  std::atomic<std::int32_t> inBufs_{0};
  std::atomic<std::int32_t> outBufs_{0};
  std::atomic<float> inPeak_{0.0F};
  std::atomic<std::int32_t> cycles_{0};

  static_assert(std::atomic<std::int32_t>::is_always_lock_free);
  static_assert(std::atomic<float>::is_always_lock_free);
};

} // namespace sonvel
