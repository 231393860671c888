// sonvel-guardian PREFIX: watches its parent and gives back the streams of taps whose names start with PREFIX
// when the parent can't: when it is killed, which closes the standard input, or stays stopped. The standard
// input carries messages of one byte (guardian_message).
#include "pipewire/guardian.h"

#include <array>
#include <exception>
#include <fcntl.h>
#include <iostream>
#include <poll.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::milliseconds kLookInterval{1000};

/// The guardian acts after the parent was found stopped this often in a row.
constexpr int kLooksToGiveBack = 2;

/// Whether a signal or a debugger has stopped the process.
bool isStopped(pid_t process) {
  const int file = open(("/proc/" + std::to_string(process) + "/stat").c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  std::array<char, 512> text{};
  const ssize_t length = read(file, text.data(), text.size());
  close(file);
  const std::string_view status(text.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  const auto name = status.rfind(") "); // the name may contain brackets
  if (name == std::string_view::npos || name + 2 >= status.size()) return false;
  return status[name + 2] == 'T' || status[name + 2] == 't';
}

/// Returns when the parent has ended (true) or has said that everything was given back (false). A parent that
/// continues after a stop takes its streams again itself.
bool watchOverParent(const std::string& tapNamePrefix) {
  using namespace sonvel::pipewire;
  pollfd input{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
  bool isResting = false;
  int looks = 0;
  while (true) {
    if (poll(&input, 1, isResting ? -1 : static_cast<int>(kLookInterval.count())) > 0) {
      char message = 0;
      if (read(STDIN_FILENO, &message, 1) != 1) return true;
      if (message == guardian_message::kAllGivenBack) return false;
      isResting = message == guardian_message::kRest;
      continue;
    }
    looks = isStopped(getppid()) ? looks + 1 : 0;
    if (looks == kLooksToGiveBack) sweepLeftovers(tapNamePrefix, kPatience);
  }
}

} // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::cerr << "usage: sonvel-guardian PREFIX, started by sonvel\n";
    return 2;
  }
  try {
    if (!watchOverParent(arguments[1])) return 0;
    return sonvel::pipewire::sweepLeftovers(arguments[1], kPatience) ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << "sonvel-guardian: " << error.what() << '\n';
    return 1;
  }
}
