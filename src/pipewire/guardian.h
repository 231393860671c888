#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace sonvel::pipewire {

/// A helper process that survives this one's death and then undoes what the server does not undo itself: the
/// targets on other programs' streams that point to our taps. If it can't be started, the next run undoes
/// them. It also acts when this process has been stopped for two seconds, for example by a terminal.
class Guardian {
 public:
  /// For taps whose names start with this prefix. Starts nothing.
  explicit Guardian(std::string tapNamePrefix);

  /// Makes the guardian do its work, unless dismiss() was called, and waits a second at most for its end.
  ~Guardian();

  Guardian(const Guardian&) = delete;
  Guardian& operator=(const Guardian&) = delete;

  /// Starts this program's guardian (guardianOf) unless one runs, and makes it check every second whether
  /// this process has been stopped. Does not block.
  void watch();

  /// Call when there is nothing to give back: the guardian sleeps until watch() or this process's death.
  void rest() noexcept;

  /// Tells the guardian that everything was given back.
  void dismiss() noexcept;

  /// Makes the guardian act now, as after this process's death. Does not block.
  void begin() noexcept;

 private:
  void tell(char message) const noexcept;

  const std::string tapNamePrefix_;
  pid_t process_ = -1;
  int lifeline_ = -1; ///< -1 while no guardian watches
  bool isResting_ = false;
  std::vector<pid_t> working_; ///< guardians that were told to act and may still run
};

/// The messages to the guardian on its standard input.
namespace guardian_message {
inline constexpr char kAllGivenBack = '\n'; ///< it ends
inline constexpr char kWatch = '+';
inline constexpr char kRest = '-';
} // namespace guardian_message

/// The guardian's work: sends every stream that targets a tap with this name prefix back to its previous
/// device, and removes all our entries from it. Blocks until done or until `patience` has passed; returns
/// whether the server has confirmed it.
bool sweepLeftovers(const std::string& tapNamePrefix, std::chrono::milliseconds patience);

} // namespace sonvel::pipewire
