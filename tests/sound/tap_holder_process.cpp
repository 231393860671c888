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
  output_ = fromChild[0];
  held_ = take();
}

TapHolder::~TapHolder() {
  if (input_ >= 0) close(input_);
  close(output_);
}

int TapHolder::ask(const std::string& request) {
  const std::string line = request + '\n';
  if (write(input_, line.data(), line.size()) < 0) throw std::runtime_error("tap-holder has gone");
  const std::string answer = readLine(output_);
  int number = 0;
  if (std::sscanf(answer.c_str(), "%d", &number) != 1) throw std::runtime_error("tap-holder says: " + answer);
  return number;
}

int TapHolder::finish() {
  close(input_);
  input_ = -1;
  return process_.wait();
}

} // namespace sonvel::sound
