#pragma once

#include "platform/executor.h"

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

  std::thread thread_;
  const std::thread::id id_;
};

} // namespace sonvel
