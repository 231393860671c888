#pragma once

#include "platform/clock.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <utility>

namespace sonvel::simulated {

/// A clock that stands still until it is told how much time passes. Any thread.
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

  /// Lets time pass. Calls every wake that falls due, on the caller's thread, in the order of their moments
  /// and for one moment in the order they were asked for, with now() at that moment; those asked for
  /// meanwhile too. Not from a wake.
  void advance(Duration duration) {
    const TimePoint end = now() + duration;
    while (const auto wake = state_->moveToNext(end))
      wake();
  }

  /// How many appointments are open.
  std::size_t pendingCount() const {
    const std::lock_guard lock(state_->mutex);
    return state_->appointments.size();
  }

 private:
  /// The moment, and a number that keeps those of one moment in order.
  using Key = std::pair<TimePoint, std::uint64_t>;

  struct State {
    std::mutex mutex;
    TimePoint now{};
    std::uint64_t nextNumber = 0;
    std::map<Key, std::function<void()>> appointments;

    /// Takes out the first appointment up to `end` and moves the time there; none: moves the time to `end`.
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
      decltype(State::appointments)::node_type cancelled; // released after the lock: it may ask the clock
      const std::lock_guard lock(state_->mutex);
      cancelled = state_->appointments.extract(key_);
    }

   private:
    std::shared_ptr<State> state_;
    Key key_;
  };

  std::shared_ptr<State> state_ = std::make_shared<State>(); ///< appointments may outlive the clock
};

} // namespace sonvel::simulated
