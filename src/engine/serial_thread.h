#pragma once

#include "platform/executor.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace sonvel {

/// An executor with its own thread.
class SerialThread final : public Executor {
 public:
  SerialThread();

  /// Calls finish().
  ~SerialThread() override;

  SerialThread(const SerialThread&) = delete;
  SerialThread& operator=(const SerialThread&) = delete;

  void post(std::function<void()> work) override;

  bool isCurrent() const override;

  using Observer = std::function<void(std::chrono::steady_clock::duration)>;

  /// From now on calls `observer` on the thread after each work, with the time that the work took.
  void observe(Observer observer);

  /// Runs the posted work and what that posts, then ends the thread. Blocks until then. Not from the thread
  /// itself.
  void finish();

 private:
  void run();
  bool takeNext(std::function<void()>& work);

  std::mutex mutex_; ///< guards the three members below
  std::condition_variable changed_;
  std::deque<std::function<void()>> work_;
  bool isFinishing_ = false;

  Observer observer_; ///< may be null; used on the thread only

  std::thread thread_;
  const std::thread::id id_;
};

} // namespace sonvel
