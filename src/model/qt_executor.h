#pragma once

#include "platform/executor.h"

#include <QObject>
#include <deque>
#include <mutex>

namespace sonvel {

/// Runs work in the Qt event loop of the thread that made this object.
class QtExecutor final : public QObject, public Executor {
 public:
  QtExecutor() = default;

  /// Runs the work that is still pending, and what that posts in turn: a coroutine that waits for it would
  /// never end otherwise.
  ~QtExecutor() override;

  QtExecutor(const QtExecutor&) = delete;
  QtExecutor& operator=(const QtExecutor&) = delete;

  void post(std::function<void()> work) override;

  /// Whether this is the executor's thread.
  bool isCurrent() const override;

 private:
  void customEvent(QEvent* event) override;

  /// Runs the next piece of work. False if there is none.
  bool runNext();

  std::mutex mutex_; ///< guards work_
  std::deque<std::function<void()>> work_;
};

} // namespace sonvel
