#include "session/tone_client.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace sonvel::session {

namespace {

constexpr std::chrono::seconds kPatience{20};

const char* nameOf(Signal signal) noexcept {
  switch (signal) {
  case Signal::tone:
    return "tone";
  case Signal::impulses:
    return "impulses";
  case Signal::counter:
    return "counter";
  case Signal::silence:
    return "silence";
  }
  return "";
}

std::vector<std::string> argumentsFor(const ToneClientOptions& options) {
  std::vector<std::string> arguments;
  if (options.helper) arguments.emplace_back("--helper");
  for (const auto& [name, value] : options.properties)
    arguments.push_back(name + "=" + value);
  return arguments;
}

} // namespace

ToneClient::ToneClient(const PrivateSession& session, const ToneClientOptions& options) {
  Command command = session.command(SONVEL_TONE_PLAYER, argumentsFor(options));
  if (!options.binaryName.empty()) {
    command.program = session.copyProgram(SONVEL_TONE_PLAYER, options.binaryName);
    command.arguments.front() = options.binaryName;
  }
  for (const auto& [name, value] : options.environment)
    command.environment[name] = value;

  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
    throw std::system_error(errno, std::generic_category(), "socketpair");
  conversation_ = ends[0];
  command.input = ends[1];
  command.output = ends[1];
  process_ = ChildProcess(command);
  ::close(ends[1]);
  playingPid_ = std::stoi(ask("pid"));
}

ToneClient::~ToneClient() {
  process_.end();
  ::close(conversation_);
}

std::uint32_t ToneClient::open(const std::string& stream, const StreamOptions& options) {
  std::string request =
      "open\t" + stream + "\tsignal=" + nameOf(options.signal) +
      "\tfrequency=" + std::to_string(options.tone.frequency) +
      "\tamplitude=" + std::to_string(options.tone.amplitude) + "\tperiod=" + std::to_string(options.period) +
      "\trate=" + std::to_string(options.rate) + "\tchannels=" + std::to_string(options.channels);
  if (options.corked) request += "\tcorked=1";
  for (const auto& [name, value] : options.properties) {
    request += "\tproperty.";
    request += name;
    request += '=';
    request += value;
  }
  return static_cast<std::uint32_t>(std::stoul(ask(request)));
}

void ToneClient::cork(const std::string& stream) {
  ask("cork\t" + stream);
}

void ToneClient::uncork(const std::string& stream) {
  ask("uncork\t" + stream);
}

void ToneClient::setAmplitude(const std::string& stream, double amplitude) {
  ask("amplitude\t" + stream + "\t" + std::to_string(amplitude));
}

void ToneClient::close(const std::string& stream) {
  ask("close\t" + stream);
}

// One line there, one line back: "ok" or "error", and a text.
std::string ToneClient::ask(const std::string& request) {
  const std::string line = request + "\n";
  if (send(conversation_, line.data(), line.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(line.size()))
    throw std::runtime_error("the tone player is gone");

  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (unread_.find('\n') == std::string::npos) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd answered{.fd = conversation_, .events = POLLIN, .revents = 0};
    if (left.count() <= 0 || poll(&answered, 1, static_cast<int>(left.count())) == 0)
      throw std::runtime_error("the tone player does not answer: " + request);
    std::array<char, 512> buffer{};
    const ssize_t count = read(conversation_, buffer.data(), buffer.size());
    if (count <= 0) throw std::runtime_error("the tone player is gone: " + request);
    unread_.append(buffer.data(), static_cast<std::size_t>(count));
  }
  const std::string answer = unread_.substr(0, unread_.find('\n'));
  unread_.erase(0, answer.size() + 1);
  if (!answer.starts_with("ok")) throw std::runtime_error(request + ": " + answer);
  return answer.size() > 3 ? answer.substr(3) : std::string{};
}

} // namespace sonvel::session
