#pragma once

#include <functional>

namespace sonvel {

/// Runs posted work in order, one piece at a time.
class Executor {
 public:
  virtual ~Executor() = default;

  /// Queues work. Any thread; does not wait for the work. The work must not throw. Work posted to an executor
  /// that has ended is dropped.
  virtual void post(std::function<void()> work) = 0;

  /// Whether the caller runs as work of this executor. Any thread.
  virtual bool isCurrent() const = 0;
};

} // namespace sonvel
