#include "pipewire/guardian.h"

#include "pipewire/server_connection.h"
#include "pipewire/stream_targets.h"
#include "platform/descriptor_limit.h"
#include "platform/guardian_path.h"

#include <spawn.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace sonvel::pipewire {

namespace {

constexpr std::chrono::milliseconds kPatience{1000};

std::string programPath() {
  std::error_code error;
  const auto own = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::string() : guardianOf(own).string();
}

/// Starts a program in a process session of its own, so that signals from a terminal or desktop to this
/// program do not reach it, with `input` as its standard input. -1 on failure.
pid_t spawn(const std::string& program, const std::string& argument, int input) {
  posix_spawn_file_actions_t files{};
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
  posix_spawnattr_t attributes{};
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK);
  std::string name = "sonvel-guardian";
  std::string prefix = argument;
  std::array<char*, 3> arguments{name.data(), prefix.data(), nullptr};
  pid_t process = -1;
  if (posix_spawn(&process, program.c_str(), &files, &attributes, arguments.data(), environ) != 0)
    process = -1;
  else
    RaisedDescriptorLimit::lowerFor(process);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return process;
}

/// Waits for a child's end for a limited time; on success it has been reaped.
void waitForEnd(pid_t process, std::chrono::milliseconds patience) {
  const auto descriptor = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
  pollfd ending{.fd = descriptor, .events = POLLIN, .revents = 0};
  if (descriptor >= 0) poll(&ending, 1, static_cast<int>(patience.count()));
  waitpid(process, nullptr, WNOHANG);
  if (descriptor >= 0) close(descriptor);
}

} // namespace

Guardian::Guardian(std::string tapNamePrefix)
    : tapNamePrefix_(std::move(tapNamePrefix)) {}

Guardian::~Guardian() {
  begin();
  if (process_ > 0) waitForEnd(process_, kPatience);
}

void Guardian::watch() {
  if (std::exchange(isResting_, false)) tell(guardian_message::kWatch);
  if (lifeline_ >= 0) return;
  if (process_ > 0) working_.push_back(std::exchange(process_, -1));
  std::erase_if(working_, [](pid_t process) { return waitpid(process, nullptr, WNOHANG) != 0; });
  std::array<int, 2> ends{-1, -1};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return;
  process_ = spawn(programPath(), tapNamePrefix_, ends[1]);
  close(ends[1]);
  lifeline_ = ends[0];
}

void Guardian::rest() noexcept {
  if (lifeline_ >= 0 && !std::exchange(isResting_, true)) tell(guardian_message::kRest);
}

void Guardian::dismiss() noexcept {
  tell(guardian_message::kAllGivenBack);
}

void Guardian::tell(char message) const noexcept {
  if (lifeline_ >= 0) send(lifeline_, &message, 1, MSG_NOSIGNAL | MSG_DONTWAIT);
}

void Guardian::begin() noexcept {
  if (lifeline_ >= 0) close(lifeline_);
  lifeline_ = -1;
  isResting_ = false;
}

bool sweepLeftovers(const std::string& tapNamePrefix, std::chrono::milliseconds patience) {
  const auto deadline = LoopThread::SteadyClock::now() + patience;
  LoopThread loop;
  Graph graph;
  loop.start();
  const LoopThread::Lock lock(loop);
  ServerState state;
  ServerConnection server(loop, graph, state, {.changed = [&] { loop.signal(); }, .lost = [] {}});
  if (!lock.waitUntil(deadline, [&] { return server.isReady() && server.mayHaveTaps(); })) return false;
  for (const auto& [id, node] : graph.nodes)
    if (targetTapOf(graph, id).starts_with(tapNamePrefix))
      for (const auto& write : writesBack(graph, id))
        server.monitor()->write(id, write);
  return server.roundTrip(lock, deadline);
}

} // namespace sonvel::pipewire
