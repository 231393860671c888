#pragma once

namespace sonvel {

/// Looking for a newer version of the program. Main thread.
class UpdateChecking {
 public:
  virtual ~UpdateChecking() = default;

  /// Whether this copy of the program can be updated at all. The same for its whole life.
  virtual bool isAvailable() const = 0;

  /// Looks now, and shows the user what comes of it. Does not wait; nothing if it is not available.
  virtual void checkForUpdates() = 0;
};

} // namespace sonvel
