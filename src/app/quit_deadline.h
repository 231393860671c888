#pragma once

#include <functional>
#include <mutex>
#include <thread>

namespace sonvel {

/// Ends the process when it was asked to quit and something in it hangs. Watches from a thread of its own, so
/// that it also sees a main thread that hangs. One at a time.
class QuitDeadline {
 public:
  /// The code with which a process ends that was not done in time.
  static constexpr int kExitCode = 3;

  QuitDeadline();

  /// It was done in time: nothing is ended any more.
  ~QuitDeadline();

  QuitDeadline(const QuitDeadline&) = delete;
  QuitDeadline& operator=(const QuitDeadline&) = delete;

  /// `giveBack` is called on the thread of this object five seconds after the first request, three before the
  /// end. It must not block: it lets others give back what the process has taken. Null: there is nothing.
  /// Waits for a call that is under way.
  void setGiveBack(std::function<void()> giveBack);

  /// The process was asked to quit; the time is counted from the first call. Any thread; does not block.
  void begin() noexcept;

  /// As begin, of the object that exists, if there is one. Async-signal-safe.
  static void beginFromSignal() noexcept;

 private:
  void watch();

  const int begun_; ///< an eventfd each
  const int over_;
  std::mutex mutex_; ///< guards the next, and its call
  std::function<void()> giveBack_;
  std::thread thread_;
};

} // namespace sonvel
