#pragma once

#include "platform/executor.h"

#include <QObject>
#include <deque>
#include <mutex>

namespace sonvel {

/// Runs work on the thread that made it, whenever that thread's Qt event loop comes to it.
class QtExecutor final : public QObject, public Executor {
 public:
  QtExecutor() = default;

  /// Runs what is posted, and what that posts in turn.
  ~QtExecutor() override;

  QtExecutor(const QtExecutor&) = delete;
  QtExecutor& operator=(const QtExecutor&) = delete;

  void post(std::function<void()> work) override;

  /// Whether this is the executor's thread.
  bool isCurrent() const override;

 private:
  void customEvent(QEvent* event) override;

  /// False if there was none.
  bool runNext();

  std::mutex mutex_; ///< guards the next
  std::deque<std::function<void()>> work_;
};

} // namespace sonvel
