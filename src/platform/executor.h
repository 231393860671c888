#pragma once

#include <functional>

namespace sonvel {

/// Runs work one piece at a time, in the order in which it was posted.
class Executor {
 public:
  virtual ~Executor() = default;

  /// Takes work to be run later. Any thread; does not wait for the work. The work must not throw. Work that
  /// is posted to an executor that has ended is dropped.
  virtual void post(std::function<void()> work) = 0;

  /// Whether the caller is work of this executor. Any thread.
  virtual bool isCurrent() const = 0;
};

} // namespace sonvel
