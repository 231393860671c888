#include "session/recorder.h"

#include "session/analysis.h"

#include <algorithm>
#include <ranges>

namespace sonvel::session {

namespace {

constexpr std::size_t kRememberedFrames = std::size_t{120} * kSampleRate;
constexpr std::size_t kForgottenAtOnce = std::size_t{10} * kSampleRate;

std::ptrdiff_t offsetOf(std::uint64_t frame) {
  return static_cast<std::ptrdiff_t>(frame);
}

} // namespace

void Recorder::append(const SampleBlock& block) {
  {
    const std::lock_guard lock(mutex_);
    if (segments_.empty() || block.afterLoss)
      segments_.push_back({.firstFrame = end(), .position = block.position});
    if (block.afterLoss) ++losses_;
    const auto frames = static_cast<std::ptrdiff_t>(block.frames);
    left_.insert(left_.end(), block.left.begin(), block.left.begin() + frames);
    right_.insert(right_.end(), block.right.begin(), block.right.begin() + frames);
    forgetOldest();
  }
  appended_.notify_all();
}

void Recorder::forgetOldest() {
  if (left_.size() < kRememberedFrames + kForgottenAtOnce) return;
  for (auto* channel : {&left_, &right_})
    channel->erase(channel->begin(), channel->begin() + offsetOf(kForgottenAtOnce));
  forgotten_ += kForgottenAtOnce;
}

std::uint64_t Recorder::mark() const {
  const std::lock_guard lock(mutex_);
  return end();
}

std::uint64_t Recorder::losses() const {
  const std::lock_guard lock(mutex_);
  return losses_;
}

Recording Recorder::since(std::uint64_t mark) const {
  const std::lock_guard lock(mutex_);
  const std::uint64_t first = std::clamp(mark, forgotten_, end());
  const std::ptrdiff_t offset = offsetOf(first - forgotten_);
  Recording recording{.left = {left_.begin() + offset, left_.end()},
                      .right = {right_.begin() + offset, right_.end()},
                      .position = 0,
                      .complete = mark >= forgotten_};
  for (const Segment& segment : segments_) {
    if (segment.firstFrame <= first) {
      recording.position = segment.position + (first - segment.firstFrame);
    } else if (segment.firstFrame < end()) {
      recording.complete = false;
    }
  }
  return recording;
}

std::vector<float> Recorder::tail(int channel, std::size_t frames) const {
  const std::lock_guard lock(mutex_);
  const std::vector<float>& samples = channel == 0 ? left_ : right_;
  return {samples.end() - offsetOf(std::min(frames, samples.size())), samples.end()};
}

bool Recorder::waitUntil(const std::function<bool()>& holds, std::chrono::milliseconds within) const {
  const auto deadline = std::chrono::steady_clock::now() + within;
  while (true) {
    const std::uint64_t seen = mark();
    if (holds()) return true;
    std::unique_lock lock(mutex_);
    if (!appended_.wait_until(lock, deadline, [&] { return end() != seen; })) return false;
  }
}

} // namespace sonvel::session
