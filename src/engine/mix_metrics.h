#pragma once

#include <atomic>
#include <cstdint>

namespace sonvel {

/// What the render callback of one channel recorded in its last cycle.
///
/// Written only by the render callback; any thread may read. No call blocks, and all are real-time safe. Each
/// field is atomic, but the fields together are not: the peak may belong to the cycle before the last counted
/// one.
class MixMetrics {
 public:
  MixMetrics() = default;

  /// Starts counting at `cycles`.
  explicit MixMetrics(std::int32_t cycles) noexcept
      : cycles_{cycles} {}

  /// Number of buffers in the last input and output list.
  std::int32_t inBufs() const noexcept { return inBufs_.load(std::memory_order_relaxed); }

  std::int32_t outBufs() const noexcept { return outBufs_.load(std::memory_order_relaxed); }

  /// Largest absolute input sample of the last cycle, before gain and mute; linear amplitude.
  float inPeak() const noexcept { return inPeak_.load(std::memory_order_relaxed); }

  /// Number of cycles so far; wraps from the largest to the smallest value.
  std::int32_t cycles() const noexcept { return cycles_.load(std::memory_order_relaxed); }

  /// Counts a cycle and replaces the values of the last one.
  void recordCycle(std::int32_t inBufs, std::int32_t outBufs, float inPeak) noexcept {
    inBufs_.store(inBufs, std::memory_order_relaxed);
    outBufs_.store(outBufs, std::memory_order_relaxed);
    inPeak_.store(inPeak, std::memory_order_relaxed);
    // One writer, so no atomic increment is needed; unsigned arithmetic wraps.
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
