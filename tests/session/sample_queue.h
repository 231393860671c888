#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace sonvel::session {

/// What one graph cycle brought.
struct SampleBlock {
  static constexpr std::size_t kMaxFrames = 8192;

  std::uint64_t position = 0; // graph clock, of the first frame
  std::size_t frames = 0;
  bool afterLoss = false; // samples before this block are missing
  std::array<float, kMaxFrames> left{};
  std::array<float, kMaxFrames> right{};
};

/// Takes blocks from one real-time thread to one other, without waiting.
class SampleQueue {
 public:
  /// The block to fill next, or null when the queue is full. Real-time safe; the writing thread.
  [[nodiscard]] SampleBlock* beginWrite() noexcept {
    const std::size_t next = written_.load(std::memory_order_relaxed);
    if (next - read_.load(std::memory_order_acquire) == blocks_.size()) return nullptr;
    return &blocks_[next % blocks_.size()];
  }

  /// Hands the block over. Real-time safe; the writing thread.
  void endWrite() noexcept { written_.fetch_add(1, std::memory_order_release); }

  /// The oldest block, or null when the queue is empty. The reading thread.
  [[nodiscard]] const SampleBlock* beginRead() const noexcept {
    const std::size_t next = read_.load(std::memory_order_relaxed);
    if (next == written_.load(std::memory_order_acquire)) return nullptr;
    return &blocks_[next % blocks_.size()];
  }

  /// Gives the block back. The reading thread.
  void endRead() noexcept { read_.fetch_add(1, std::memory_order_release); }

 private:
  static constexpr std::size_t kBlocks = 64; // over a second at the usual quantum

  std::vector<SampleBlock> blocks_ = std::vector<SampleBlock>(kBlocks);
  std::atomic<std::size_t> written_ = 0;
  std::atomic<std::size_t> read_ = 0;
};

} // namespace sonvel::session
