#include "platform/pipewire/guardian.h"

#include <spawn.h>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace sonvel::pipewire {

namespace {

std::string programPath() {
  std::error_code error;
  const auto own = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::string() : (own.parent_path() / "sonvel-guardian").string();
}

/// Starts a program in a session of its own, out of reach of what a terminal or a desktop sends to ours, with
/// `input` as its standard input. -1 if it can't be started.
pid_t spawn(const std::string& program, const std::string& argument, int input) {
  posix_spawn_file_actions_t files{};
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
  posix_spawnattr_t attributes{};
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  std::string name = "sonvel-guardian";
  std::string prefix = argument;
  std::array<char*, 3> arguments{name.data(), prefix.data(), nullptr};
  pid_t process = -1;
  if (posix_spawn(&process, program.c_str(), &files, &attributes, arguments.data(), environ) != 0)
    process = -1;
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return process;
}

} // namespace

Guardian::Guardian(const std::string& tapNamePrefix) {
  std::array<int, 2> ends{-1, -1};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return;
  process_ = spawn(programPath(), tapNamePrefix, ends[0]);
  close(ends[0]);
  lifeline_ = ends[1];
}

Guardian::~Guardian() {
  if (lifeline_ >= 0) close(lifeline_);
}

void Guardian::dismiss() noexcept {
  if (process_ <= 0) return;
  constexpr char kAllIsWell = '\n';
  if (write(lifeline_, &kAllIsWell, 1) != 1) ::kill(process_, SIGTERM);
  waitpid(process_, nullptr, 0);
  process_ = -1;
}

} // namespace sonvel::pipewire
