#pragma once

#include "session/listener.h"
#include "session/sample_queue.h"

#include <condition_variable>
#include <functional>
#include <mutex>

namespace sonvel::session {

/// The memory of a listener: written by one thread, read and awaited by another.
class Recorder {
 public:
  void append(const SampleBlock& block);

  [[nodiscard]] std::uint64_t mark() const;
  [[nodiscard]] std::uint64_t losses() const;
  [[nodiscard]] Recording since(std::uint64_t mark) const;
  /// The last frames of one channel, or all when there are fewer.
  [[nodiscard]] std::vector<float> tail(int channel, std::size_t frames) const;
  /// Blocks until `holds` after some append, asked once before; false after the time given. Calls `holds`
  /// without a lock.
  [[nodiscard]] bool waitUntil(const std::function<bool()>& holds, std::chrono::milliseconds within) const;

 private:
  // A run of frames without a gap.
  struct Segment {
    std::uint64_t firstFrame = 0;
    std::uint64_t position = 0;
  };

  void forgetOldest();

  [[nodiscard]] std::uint64_t end() const noexcept { return forgotten_ + left_.size(); }

  mutable std::mutex mutex_;
  mutable std::condition_variable appended_;
  std::vector<float> left_;
  std::vector<float> right_;
  std::uint64_t forgotten_ = 0; // frames that are no longer in the vectors
  std::uint64_t losses_ = 0;
  std::vector<Segment> segments_;
};

} // namespace sonvel::session
