#pragma once

namespace sonvel {

/// Checks for a newer version of the program. Main thread.
class UpdateChecking {
 public:
  virtual ~UpdateChecking() = default;

  /// Whether this copy of the program can be updated. Constant.
  virtual bool isAvailable() const = 0;

  /// Checks now and shows the result to the user. Does not wait; no effect if not available.
  virtual void checkForUpdates() = 0;
};

} // namespace sonvel
