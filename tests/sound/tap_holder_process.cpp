#include "sound/tap_holder.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace sonvel::sound {

namespace {

std::array<int, 2> makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe can be made");
  return ends;
}

std::string readLine(int descriptor) {
  std::string line;
  char letter = 0;
  while (read(descriptor, &letter, 1) == 1 && letter != '\n')
    line += letter;
  return line;
}

} // namespace

TapHolder::TapHolder(const session::PrivateSession& session, float gain) {
  const auto toChild = makePipe();
  const auto fromChild = makePipe();
  auto command = session.command(SONVEL_TAP_HOLDER, {std::to_string(gain)});
  command.input = toChild[0];
  command.output = fromChild[1];
  process_ = session::ChildProcess(command);
  close(toChild[0]);
  close(fromChild[1]);
  input_ = toChild[1];
  const std::string line = readLine(fromChild[0]);
  close(fromChild[0]);
  if (std::sscanf(line.c_str(), "holding %d", &held_) != 1)
    throw std::runtime_error("tap-holder says: " + line);
}

TapHolder::~TapHolder() {
  if (input_ >= 0) close(input_);
}

int TapHolder::finish() {
  close(input_);
  input_ = -1;
  return process_.wait();
}

} // namespace sonvel::sound
