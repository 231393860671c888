#include "desktop/steady_clock.h"

#include <algorithm>
#include <cassert>
#include <condition_variable>
#include <map>
#include <mutex>
#include <pthread.h>
#include <utility>

namespace sonvel::desktop {

/// The pending wakes, ordered by time, then by order of calls. Wakes are called and destroyed without the
/// lock, because both may create or cancel timers.
class SteadyClock::Agenda {
 public:
  using Key = std::pair<TimePoint, std::uint64_t>;

  Key add(TimePoint due, std::function<void()> wake) {
    const std::lock_guard lock(mutex_);
    const Key key{due, nextNumber_++};
    if (isOpen_) wakes_.emplace(key, std::move(wake));
    changed_.notify_one();
    return key;
  }

  void remove(const Key& key) {
    Wakes::node_type removed;
    const std::lock_guard lock(mutex_);
    removed = wakes_.extract(key);
  }

  void close() {
    Wakes dropped;
    const std::lock_guard lock(mutex_);
    isOpen_ = false;
    dropped.swap(wakes_);
    changed_.notify_one();
  }

  void run() {
    while (const auto wake = waitForNext())
      wake();
  }

 private:
  using Wakes = std::map<Key, std::function<void()>>;

  /// None once the agenda is closed.
  std::function<void()> waitForNext() {
    std::unique_lock lock(mutex_);
    while (isOpen_) {
      if (wakes_.empty()) {
        changed_.wait(lock);
      } else if (const TimePoint due = wakes_.begin()->first.first; due > std::chrono::steady_clock::now()) {
        changed_.wait_until(lock, due);
      } else {
        return std::move(wakes_.extract(wakes_.begin()).mapped());
      }
    }
    return {};
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  Wakes wakes_;
  std::uint64_t nextNumber_ = 0;
  bool isOpen_ = true;
};

class SteadyClock::Appointment final : public Timer {
 public:
  Appointment(std::weak_ptr<Agenda> agenda, const Agenda::Key& key)
      : agenda_(std::move(agenda))
      , key_(key) {}

  ~Appointment() override {
    if (const auto agenda = agenda_.lock()) agenda->remove(key_);
  }

  Appointment(const Appointment&) = delete;
  Appointment& operator=(const Appointment&) = delete;

 private:
  std::weak_ptr<Agenda> agenda_;
  Agenda::Key key_;
};

SteadyClock::SteadyClock()
    : agenda_(std::make_shared<Agenda>())
    , thread_([agenda = agenda_] { agenda->run(); }) {
  pthread_setname_np(thread_.native_handle(), "sonvel-clock");
}

SteadyClock::~SteadyClock() {
  assert(thread_.get_id() != std::this_thread::get_id());
  agenda_->close();
  thread_.join();
}

Clock::TimePoint SteadyClock::now() const {
  return std::chrono::steady_clock::now();
}

std::unique_ptr<Timer> SteadyClock::callAfter(Duration delay, std::function<void()> wake) {
  assert(wake);
  const TimePoint start = now();
  const TimePoint due = start + std::clamp(delay, Duration::zero(), TimePoint::max() - start);
  return std::make_unique<Appointment>(agenda_, agenda_->add(due, std::move(wake)));
}

} // namespace sonvel::desktop
