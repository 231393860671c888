#include "session/child_process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace sonvel::session {

namespace {

std::vector<std::string> mergedEnvironment(const Environment& changes) {
  std::vector<std::string> merged;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string variable(*entry);
    if (!changes.contains(variable.substr(0, variable.find('=')))) merged.push_back(variable);
  }
  for (const auto& [name, value] : changes)
    if (value) merged.push_back(name + "=" + *value);
  return merged;
}

// The form that exec takes; valid as long as the strings.
std::vector<char*> pointersTo(std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  pointers.reserve(strings.size() + 1);
  for (std::string& string : strings)
    pointers.push_back(string.data());
  pointers.push_back(nullptr);
  return pointers;
}

// Everything below runs between fork and exec, where only async-signal-safe calls are allowed.

void redirect(int from, int to, int openFlags) noexcept {
  const int source = from >= 0 ? from : open("/dev/null", openFlags);
  if (source == to) {
    fcntl(to, F_SETFD, 0);
  } else {
    dup2(source, to);
  }
}

void becomeChild(const Command& command, pid_t parent) noexcept {
  if (!command.outlivesUs) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);
  }

  // Never our group, so that an interrupt from the terminal reaches us alone, who end the rest in order.
  if (setpgid(0, command.group) != 0) setpgid(0, 0);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  for (const int number : {SIGPIPE, SIGINT, SIGTERM, SIGCHLD})
    ::signal(number, SIG_DFL);

  redirect(command.input, STDIN_FILENO, O_RDONLY);
  if (command.output >= 0) redirect(command.output, STDOUT_FILENO, O_WRONLY);
  if (command.error >= 0) redirect(command.error, STDERR_FILENO, O_WRONLY);
}

[[noreturn]] void reportAndExit(int report) noexcept {
  const int error = errno;
  [[maybe_unused]] const ssize_t written = write(report, &error, sizeof error);
  _exit(127);
}

} // namespace

ChildProcess::ChildProcess(const Command& command) {
  std::vector<std::string> arguments = command.arguments;
  std::vector<std::string> environment = mergedEnvironment(command.environment);
  const std::vector<char*> argv = pointersTo(arguments);
  const std::vector<char*> envp = pointersTo(environment);

  // Closed by a successful exec; otherwise it brings the error.
  std::array<int, 2> report{};
  if (pipe2(report.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");

  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ == 0) {
    becomeChild(command, parent);
    execvpe(command.program.c_str(), argv.data(), envp.data());
    reportAndExit(report[1]);
  }
  const int forkError = errno;
  close(report[1]);
  int error = pid_ < 0 ? forkError : 0;
  if (pid_ > 0) descriptor_ = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
  if (pid_ > 0 && read(report[0], &error, sizeof error) <= 0) error = 0;
  close(report[0]);
  if (error != 0) {
    kill();
    throw std::system_error(error, std::generic_category(), "starting " + command.program);
  }
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, 0))
    , descriptor_(std::exchange(other.descriptor_, -1))
    , exitCode_(other.exitCode_) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
  if (this != &other) {
    end();
    pid_ = std::exchange(other.pid_, 0);
    descriptor_ = std::exchange(other.descriptor_, -1);
    exitCode_ = other.exitCode_;
  }
  return *this;
}

ChildProcess::~ChildProcess() {
  end();
}

bool ChildProcess::running() noexcept {
  return pid_ > 0 && !reap(0);
}

void ChildProcess::signal(int number) noexcept {
  if (pid_ > 0) ::kill(pid_, number);
}

int ChildProcess::wait() {
  if (pid_ > 0) reap(-1);
  return exitCode_;
}

void ChildProcess::end() noexcept {
  if (pid_ <= 0) return;
  signal(SIGTERM);
  if (!reap(500)) kill();
}

void ChildProcess::kill() noexcept {
  if (pid_ <= 0) return;
  signal(SIGKILL);
  reap(-1);
}

// Whether it has ended within this time (-1: without limit).
bool ChildProcess::reap(int milliseconds) noexcept {
  pollfd ended{.fd = descriptor_, .events = POLLIN, .revents = 0};
  int ready = 0;
  do {
    ready = poll(&ended, 1, milliseconds);
  } while (ready < 0 && errno == EINTR);
  if (ready == 0) return false;

  int status = 0;
  while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
  }
  exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  close(descriptor_);
  descriptor_ = -1;
  pid_ = 0;
  return true;
}

} // namespace sonvel::session
