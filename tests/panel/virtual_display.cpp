#include "panel/virtual_display.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace sonvel::testing {

VirtualDisplay::VirtualDisplay()
    : name_(":") {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  server_ = session::ChildProcess({.program = "Xvfb",
                                   .arguments = {"Xvfb", "-displayfd", "1", "-screen", "0", "1280x800x24",
                                                 "-nolisten", "tcp", "-noreset"},
                                   .output = ends[1]});
  close(ends[1]);
  char letter = 0;
  while (read(ends[0], &letter, 1) == 1 && letter != '\n')
    name_ += letter;
  close(ends[0]);
  if (letter != '\n') throw std::runtime_error("no X11 display");
}

session::Environment VirtualDisplay::environment() const {
  return {{"DISPLAY", name_}, {"WAYLAND_DISPLAY", std::nullopt}, {"QT_QPA_PLATFORM", "xcb"}};
}

} // namespace sonvel::testing
