#include "panel/line_process.h"

#include "session/eventually.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace sonvel::testing {

LineProcess::LineProcess(const std::string& program, std::vector<std::string> arguments,
                         session::Environment environment) {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
    throw std::system_error(errno, std::generic_category(), "socketpair");
  conversation_ = ends[0];
  arguments.insert(arguments.begin(), program);
  process_ = session::ChildProcess({.program = program,
                                    .arguments = std::move(arguments),
                                    .environment = std::move(environment),
                                    .input = ends[1],
                                    .output = ends[1]});
  close(ends[1]);
}

LineProcess::~LineProcess() {
  close(conversation_);
}

void LineProcess::send(std::string_view line) const {
  const std::string text = std::string(line) + "\n";
  [[maybe_unused]] const ssize_t sent = ::send(conversation_, text.data(), text.size(), MSG_NOSIGNAL);
}

std::optional<std::string> LineProcess::nextLine(std::chrono::milliseconds within) {
  const auto deadline = std::chrono::steady_clock::now() + within;
  while (unread_.find('\n') == std::string::npos) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd readable{.fd = conversation_, .events = POLLIN, .revents = 0};
    if (left.count() <= 0 || poll(&readable, 1, static_cast<int>(left.count())) <= 0) return std::nullopt;
    std::array<char, 1024> bytes{};
    const ssize_t count = read(conversation_, bytes.data(), bytes.size());
    if (count <= 0) return std::nullopt;
    unread_.append(bytes.data(), static_cast<std::size_t>(count));
  }
  const std::size_t end = unread_.find('\n');
  std::string line = unread_.substr(0, end);
  unread_.erase(0, end + 1);
  return line;
}

bool LineProcess::awaitLine(std::string_view wanted, std::chrono::milliseconds within) {
  while (const std::optional<std::string> line = nextLine(within))
    if (*line == wanted) return true;
  return false;
}

std::optional<int> LineProcess::exitCode(std::chrono::milliseconds within) {
  if (!session::eventually([&] { return !process_.running(); }, within)) return std::nullopt;
  return process_.wait();
}

} // namespace sonvel::testing
