#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <utility>

namespace sonvel::pipewire {

/// A value that one thread replaces while the real-time thread reads it. The reader never waits; the writer
/// waits until the old value is not read any more, and then frees it.
template <class Value> class RealtimeValue {
 public:
  RealtimeValue() = default;
  RealtimeValue(const RealtimeValue&) = delete;
  RealtimeValue& operator=(const RealtimeValue&) = delete;

  /// Calls `use` with the current value. Real-time safe if `use` is. For one thread at a time.
  template <class Use> void read(const Use& use) noexcept {
    // In the total order of these operations either the writer sees that this thread reads, or this thread
    // sees the writer's new value.
    isRead_.store(true);
    use(*current_.load());
    isRead_.store(false, std::memory_order_release);
  }

  /// Waits for at most one read that is under way. For one thread at a time, which is not the reader's.
  void replace(Value value) {
    auto next = std::make_unique<const Value>(std::move(value));
    current_.store(next.get());
    while (isRead_.load())
      std::this_thread::sleep_for(kPoll);
    value_ = std::move(next);
  }

  /// The current value; for the writer's thread.
  const Value& get() const noexcept { return *value_; }

 private:
  static constexpr std::chrono::microseconds kPoll{20}; ///< a cycle takes about as long

  std::unique_ptr<const Value> value_ = std::make_unique<const Value>();
  std::atomic<const Value*> current_{value_.get()};
  std::atomic<bool> isRead_{false};
};

} // namespace sonvel::pipewire
