#pragma once

#include "pipewire/handles.h"

#include <chrono>
#include <csignal>
#include <functional>

namespace sonvel::pipewire {

/// While this lives, new threads block the signals meant for the program.
class SignalsBlocked {
 public:
  SignalsBlocked() noexcept;
  ~SignalsBlocked();
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_{};
};

/// A timer or event of the loop, removed on destruction. The callback runs on the loop thread with the lock
/// held.
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

/// Any number of signals before the callback runs cause one call.
class LoopEvent : public LoopSource {
 public:
  LoopEvent(pw_loop* loop, std::function<void()> callback);

  /// Any thread, including the real-time one: one non-blocking write to a descriptor.
  void signal() noexcept { pw_loop_signal_event(loop_, source_); }
};

/// Fires once, `delay` after it was last armed.
class LoopTimer : public LoopSource {
 public:
  LoopTimer(pw_loop* loop, std::function<void()> callback);

  void arm(std::chrono::milliseconds delay) noexcept;

  /// Arms it unless it is armed, so that repeated calls do not delay it.
  void armOnce(std::chrono::milliseconds delay) noexcept;

 private:
  void fire();

  bool isArmed_ = false;
};

/// The thread on which the library delivers events. All state in this folder is protected by its lock, which
/// the thread holds while it delivers.
class LoopThread {
 public:
  using SteadyClock = std::chrono::steady_clock;
  using Deadline = SteadyClock::time_point;

  /// Stops the delivery of events while held. Never taken by the real-time thread.
  class Lock {
   public:
    explicit Lock(LoopThread& loop) noexcept
        : loop_(loop) {
      pw_thread_loop_lock(loop_.loop_.get());
    }

    ~Lock() { pw_thread_loop_unlock(loop_.loop_.get()); }

    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    /// Processes events until `isTrue` or the deadline; returns the last result of `isTrue`.
    bool waitUntil(Deadline deadline, const std::function<bool()>& isTrue) const;

   private:
    LoopThread& loop_;
  };

  LoopThread();
  ~LoopThread();
  LoopThread(const LoopThread&) = delete;
  LoopThread& operator=(const LoopThread&) = delete;

  /// Starts delivering events. Throws std::runtime_error if no thread can be created.
  void start();

  /// Returns when no more events are delivered. Call without the lock.
  void stop() noexcept;

  /// Wakes all waitUntil() calls.
  void signal() noexcept { pw_thread_loop_signal(loop_.get(), false); }

  pw_loop* loop() noexcept { return pw_thread_loop_get_loop(loop_.get()); }

 private:
  ThreadLoopHandle loop_;
  std::unique_ptr<LoopTimer> tick_; ///< wakes waiting threads, so that they check their deadlines
  int waiting_ = 0;
};

} // namespace sonvel::pipewire
