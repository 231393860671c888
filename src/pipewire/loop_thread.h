#pragma once

#include "pipewire/handles.h"

#include <chrono>
#include <csignal>
#include <functional>

namespace sonvel::pipewire {

/// Threads that start while this lives never take a signal that is meant for the program.
class SignalsBlocked {
 public:
  SignalsBlocked() noexcept;
  ~SignalsBlocked();
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_{};
};

/// An event source of the loop, one of timer and event, destroyed with this object. The callback runs on the
/// loop thread with the lock held.
class LoopSource {
 public:
  LoopSource(pw_loop* loop, std::function<void()> callback)
      : loop_(loop)
      , callback_(std::move(callback)) {}

  ~LoopSource() { pw_loop_destroy_source(loop_, source_); }

  LoopSource(const LoopSource&) = delete;
  LoopSource& operator=(const LoopSource&) = delete;

 protected:
  pw_loop* loop_;
  std::function<void()> callback_;
  spa_source* source_ = nullptr;
};

/// Fires once for any number of signals before it runs.
class LoopEvent : public LoopSource {
 public:
  LoopEvent(pw_loop* loop, std::function<void()> callback);

  /// Any thread, also the real-time one: a single write to a descriptor that does not block.
  void signal() noexcept { pw_loop_signal_event(loop_, source_); }
};

/// Fires once, `delay` after it was last armed.
class LoopTimer : public LoopSource {
 public:
  LoopTimer(pw_loop* loop, std::function<void()> callback);

  void arm(std::chrono::milliseconds delay) noexcept;

  /// Arms it if it is not armed, so that many who ask don't put it off for ever.
  void armOnce(std::chrono::milliseconds delay) noexcept;

 private:
  void fire();

  bool isArmed_ = false;
};

/// The thread on which the library delivers events. All state of this folder belongs to whoever holds its
/// lock, which the thread itself does while it delivers.
class LoopThread {
 public:
  using SteadyClock = std::chrono::steady_clock;
  using Deadline = SteadyClock::time_point;

  /// Holds the loop still. Never taken by the real-time thread.
  class Lock {
   public:
    explicit Lock(LoopThread& loop) noexcept
        : loop_(loop) {
      pw_thread_loop_lock(loop_.loop_.get());
    }

    ~Lock() { pw_thread_loop_unlock(loop_.loop_.get()); }

    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    /// Lets events happen until `isTrue` or the deadline; returns the last answer of `isTrue`.
    bool waitUntil(Deadline deadline, const std::function<bool()>& isTrue) const;

   private:
    LoopThread& loop_;
  };

  LoopThread();
  ~LoopThread();
  LoopThread(const LoopThread&) = delete;
  LoopThread& operator=(const LoopThread&) = delete;

  /// Begins to deliver. Throws std::runtime_error if the machine has no thread left.
  void start();

  /// Returns when nothing is delivered any more. Without the lock.
  void stop() noexcept;

  /// Wakes all who wait for a condition.
  void signal() noexcept { pw_thread_loop_signal(loop_.get(), false); }

  pw_loop* loop() noexcept { return pw_thread_loop_get_loop(loop_.get()); }

 private:
  ThreadLoopHandle loop_;
  std::unique_ptr<LoopTimer> tick_; ///< wakes those who wait, so that they can look at the time
  int waiting_ = 0;
};

} // namespace sonvel::pipewire
