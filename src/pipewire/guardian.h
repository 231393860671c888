#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace sonvel::pipewire {

/// A small process that outlives this one when it is killed, and then undoes what the server does not undo by
/// itself: the targets of our taps on other programs' streams. Where it can't be started, the next run does
/// that. It does the same once this process has been stopped for two seconds, as a terminal does it.
class Guardian {
 public:
  /// For taps whose names begin so. Starts nothing.
  explicit Guardian(std::string tapNamePrefix);

  /// Lets it do its work, if it was not told before that there is none, and waits a second at most for its
  /// end.
  ~Guardian();

  Guardian(const Guardian&) = delete;
  Guardian& operator=(const Guardian&) = delete;

  /// Starts the guardian of this program (guardianOf), unless one watches already. Does not block.
  void watch();

  /// Tells it that all was given back.
  void dismiss() noexcept;

  /// Lets it do its work now, as if this process had died. Does not wait for it.
  void begin() noexcept;

 private:
  const std::string tapNamePrefix_;
  pid_t process_ = -1;
  int lifeline_ = -1;          ///< -1 while nobody watches
  std::vector<pid_t> working_; ///< those that have begun and may not have ended yet
};

/// What the guardian does: sends every stream that is still meant for a tap whose name begins so back to
/// where its user had it, and leaves nothing of ours on it. Blocks until it is done or `patience` has passed;
/// whether the server has confirmed it.
bool sweepLeftovers(const std::string& tapNamePrefix, std::chrono::milliseconds patience);

} // namespace sonvel::pipewire
