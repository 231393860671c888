// sonvel-guardian PREFIX: waits on its standard input for a byte, which says that all was given back, or for
// its end, which says that its parent was killed; then it gives back what is left of the taps whose names
// begin so.
#include "pipewire/guardian.h"

#include <exception>
#include <iostream>
#include <unistd.h>

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::cerr << "usage: sonvel-guardian PREFIX, started by sonvel\n";
    return 2;
  }
  try {
    char byte = 0;
    if (read(STDIN_FILENO, &byte, 1) == 1) return 0;
    constexpr std::chrono::seconds kPatience{5};
    return sonvel::pipewire::sweepLeftovers(arguments[1], kPatience) ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << "sonvel-guardian: " << error.what() << '\n';
    return 1;
  }
}
