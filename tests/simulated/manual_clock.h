#pragma once

#include "platform/clock.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <utility>

namespace sonvel::simulated {

/// A clock that advances only on request. Any thread.
class ManualClock final : public Clock {
 public:
  TimePoint now() const override {
    const std::lock_guard lock(state_->mutex);
    return state_->now;
  }

  std::unique_ptr<Timer> callAfter(Duration delay, std::function<void()> wake) override {
    const std::lock_guard lock(state_->mutex);
    const Key key(state_->now + std::max(delay, Duration::zero()), state_->nextNumber++);
    state_->appointments.emplace(key, std::move(wake));
    return std::make_unique<Appointment>(state_, key);
  }

  /// Advances time. Calls all due wakes on the calling thread, in the order of time, then of their calls,
  /// with now() at their time; including those added meanwhile. Not from a wake.
  void advance(Duration duration) {
    const TimePoint end = now() + duration;
    while (const auto wake = state_->moveToNext(end))
      wake();
  }

  /// The number of pending wakes.
  std::size_t pendingCount() const {
    const std::lock_guard lock(state_->mutex);
    return state_->appointments.size();
  }

 private:
  /// The time, and a number for the order within it.
  using Key = std::pair<TimePoint, std::uint64_t>;

  struct State {
    std::mutex mutex;
    TimePoint now{};
    std::uint64_t nextNumber = 0;
    std::map<Key, std::function<void()>> appointments;

    /// Removes the first wake up to `end` and sets the time to it; none: sets the time to `end`.
    std::function<void()> moveToNext(TimePoint end) {
      const std::lock_guard lock(mutex);
      const auto first = appointments.begin();
      const bool isDue = first != appointments.end() && first->first.first <= end;
      now = isDue ? std::max(now, first->first.first) : end;
      return isDue ? std::move(appointments.extract(first).mapped()) : nullptr;
    }
  };

  class Appointment final : public Timer {
   public:
    Appointment(std::shared_ptr<State> state, Key key)
        : state_(std::move(state))
        , key_(std::move(key)) {}

    Appointment(const Appointment&) = delete;
    Appointment& operator=(const Appointment&) = delete;

    ~Appointment() override {
      // released without the lock, because it may call the clock
      decltype(State::appointments)::node_type cancelled;
      const std::lock_guard lock(state_->mutex);
      cancelled = state_->appointments.extract(key_);
    }

   private:
    std::shared_ptr<State> state_;
    Key key_;
  };

  std::shared_ptr<State> state_ = std::make_shared<State>(); ///< timers may outlive the clock
};

} // namespace sonvel::simulated
