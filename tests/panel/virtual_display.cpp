#include "panel/virtual_display.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace sonvel::testing {

namespace {

constexpr int kPatienceMilliseconds = 20000;

/// The line that the server writes when it serves: the number of its display.
std::string readNumber(int descriptor) {
  std::string number;
  pollfd polled{.fd = descriptor, .events = POLLIN, .revents = 0};
  char character = 0;
  while (poll(&polled, 1, kPatienceMilliseconds) == 1 && read(descriptor, &character, 1) == 1 &&
         character != '\n')
    number += character;
  return number;
}

} // namespace

VirtualDisplay::VirtualDisplay() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  server_ = session::ChildProcess({.program = "Xvfb",
                                   .arguments = {"Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24",
                                                 "-nolisten", "tcp", "-noreset"},
                                   .output = ends[1]});
  close(ends[1]);
  const auto number = readNumber(ends[0]);
  close(ends[0]);
  if (number.empty()) throw std::runtime_error("no virtual display");
  name_ = ":" + number;
}

session::Environment VirtualDisplay::environment() const {
  return {{"DISPLAY", name_}, {"WAYLAND_DISPLAY", std::nullopt}, {"QT_QPA_PLATFORM", "xcb"}};
}

} // namespace sonvel::testing
