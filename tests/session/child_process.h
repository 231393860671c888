#pragma once

#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace sonvel::session {

/// Environment variables by name; an absent value removes the variable from what is inherited.
using Environment = std::map<std::string, std::optional<std::string>>;

/// What to start and with which descriptors; -1 stands for /dev/null (input) or our own (output, error).
struct Command {
  std::string program{};                // path, or a name to look up in PATH
  std::vector<std::string> arguments{}; // from argv[0] on
  Environment environment{};            // on top of our own
  int input = -1;
  int output = -1;
  int error = -1;
  bool outlivesUs = false; // not ended by the kernel when we end
  pid_t group = 0;         // the process group to join, 0: one of its own
};

/// A process of ours that never outlives us: it is ended by the destructor, and by the kernel when the thread
/// that started it ends (so start it from a thread that lives as long as it should). One thread at a time.
class ChildProcess {
 public:
  ChildProcess() = default;
  /// Throws std::system_error when the program can't be started.
  explicit ChildProcess(const Command& command);
  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess& operator=(ChildProcess&& other) noexcept;
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  /// 0 once it has been seen to end, or when nothing was started.
  [[nodiscard]] pid_t pid() const noexcept { return pid_; }

  /// Whether it has not ended yet. Does not block.
  [[nodiscard]] bool running() noexcept;
  /// Sends a signal; does nothing when it has ended.
  void signal(int number) noexcept;
  /// Blocks until it has ended by itself, and returns its exit code, or 128 plus the signal that ended it.
  int wait();
  /// SIGTERM, and SIGKILL after half a second; blocks until it has ended.
  void end() noexcept;
  /// SIGKILL; blocks until it has ended.
  void kill() noexcept;

 private:
  bool reap(int milliseconds) noexcept;

  pid_t pid_ = 0;
  int descriptor_ = -1; // a pidfd: readable once the process has ended
  int exitCode_ = 0;
};

} // namespace sonvel::session
