#pragma once

#include <functional>
#include <mutex>
#include <thread>

namespace sonvel {

/// Ends the process if it was asked to quit and does not finish in time. Runs on a thread of its own, so that
/// a hanging main thread is detected too. One at a time.
class QuitDeadline {
 public:
  /// Exit code of a process that did not finish in time.
  static constexpr int kExitCode = 3;

  QuitDeadline();

  /// Cancels the deadline: the process has finished in time.
  ~QuitDeadline();

  QuitDeadline(const QuitDeadline&) = delete;
  QuitDeadline& operator=(const QuitDeadline&) = delete;

  /// Sets a function called on this object's thread five seconds after the first request, three before the
  /// forced end. It must not block: it tells others to give back what the process holds. Null: none. Waits
  /// while a call is running.
  void setGiveBack(std::function<void()> giveBack);

  /// Records the request to quit; time runs from the first call. Any thread; does not block.
  void begin() noexcept;

  /// begin() on the existing object, if any. Async-signal-safe.
  static void beginFromSignal() noexcept;

 private:
  void watch();

  const int begun_; ///< eventfds
  const int over_;
  std::mutex mutex_; ///< guards giveBack_ and its call
  std::function<void()> giveBack_;
  std::thread thread_;
};

} // namespace sonvel
