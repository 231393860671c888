#include "simulated/manual_clock.h"

#include <condition_variable>
#include <map>
#include <mutex>

namespace sonvel::simulated {

struct ManualClock::State {
  /// The moment, and a number that keeps those of one moment in order.
  using Key = std::pair<TimePoint, std::uint64_t>;

  mutable std::mutex mutex;
  mutable std::condition_variable appointmentMade;
  TimePoint now{};
  std::uint64_t nextNumber = 0;
  std::map<Key, std::function<void()>> appointments;

  /// Takes out the first appointment up to `end` and moves the time there; none: moves the time to `end`.
  std::function<void()> moveToNext(TimePoint end) {
    const std::lock_guard lock(mutex);
    const auto first = appointments.begin();
    if (first == appointments.end() || first->first.first > end) {
      now = end;
      return nullptr;
    }
    now = std::max(now, first->first.first);
    auto wake = std::move(first->second);
    appointments.erase(first);
    return wake;
  }
};

class ManualClock::Appointment final : public Timer {
 public:
  Appointment(std::shared_ptr<State> state, State::Key key)
      : state_(std::move(state))
      , key_(std::move(key)) {}

  Appointment(const Appointment&) = delete;
  Appointment& operator=(const Appointment&) = delete;

  ~Appointment() override {
    std::function<void()> wake; // released after the lock: what it holds may ask the clock again
    const std::lock_guard lock(state_->mutex);
    if (auto node = state_->appointments.extract(key_)) wake = std::move(node.mapped());
  }

 private:
  std::shared_ptr<State> state_;
  State::Key key_;
};

ManualClock::ManualClock()
    : state_(std::make_shared<State>()) {}

ManualClock::TimePoint ManualClock::now() const {
  const std::lock_guard lock(state_->mutex);
  return state_->now;
}

std::unique_ptr<Timer> ManualClock::callAfter(Duration delay, std::function<void()> wake) {
  const std::lock_guard lock(state_->mutex);
  const State::Key key(state_->now + std::max(delay, Duration::zero()), state_->nextNumber++);
  state_->appointments.emplace(key, std::move(wake));
  state_->appointmentMade.notify_all();
  return std::make_unique<Appointment>(state_, key);
}

void ManualClock::advance(Duration duration) {
  const TimePoint end = now() + duration;
  while (auto wake = state_->moveToNext(end))
    wake();
}

std::size_t ManualClock::pendingCount() const {
  const std::lock_guard lock(state_->mutex);
  return state_->appointments.size();
}

bool ManualClock::waitForPending(std::size_t count, std::chrono::milliseconds deadline) const {
  std::unique_lock lock(state_->mutex);
  return state_->appointmentMade.wait_for(lock, deadline,
                                          [&] { return state_->appointments.size() >= count; });
}

} // namespace sonvel::simulated
