#pragma once

#include <atomic>

namespace sonvel {

/// Passes the gain and mute of one channel to its render callback.
///
/// Written only by the engine's actor, read by the render callback; any thread may read. No call blocks, and
/// all are real-time safe. Each field is atomic, but the two together are not: a reader may see the new gain
/// with the old mute.
class RealtimeMixBox {
 public:
  /// Linear amplitude factor; 1.0 is unity. Stored without clamping.
  float gain() const noexcept { return gain_.load(std::memory_order_relaxed); }

  void setGain(float gain) noexcept { gain_.store(gain, std::memory_order_relaxed); }

  bool muted() const noexcept { return muted_.load(std::memory_order_relaxed); }

  void setMuted(bool muted) noexcept { muted_.store(muted, std::memory_order_relaxed); }

  /// 0.0 while muted, otherwise the gain.
  float effectiveGain() const noexcept { return muted() ? 0.0F : gain(); }

 private:
  std::atomic<float> gain_{1.0F};
  std::atomic<bool> muted_{false};

  static_assert(std::atomic<float>::is_always_lock_free);
  static_assert(std::atomic<bool>::is_always_lock_free);
};

} // namespace sonvel
