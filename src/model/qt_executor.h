#pragma once

#include "platform/executor.h"

#include <QObject>
#include <deque>
#include <mutex>

namespace sonvel {

/// Runs work in the Qt event loop of the thread that constructs it.
class QtExecutor final : public QObject, public Executor {
 public:
  QtExecutor() = default;

  /// Runs the pending work and what that posts; a coroutine waiting for it would otherwise never end.
  ~QtExecutor() override;

  QtExecutor(const QtExecutor&) = delete;
  QtExecutor& operator=(const QtExecutor&) = delete;

  void post(std::function<void()> work) override;

  /// Whether this is the executor's thread.
  bool isCurrent() const override;

 private:
  void customEvent(QEvent* event) override;

  /// Runs the next piece of work. False if none is queued.
  bool runNext();

  std::mutex mutex_; ///< guards work_
  std::deque<std::function<void()>> work_;
};

} // namespace sonvel
