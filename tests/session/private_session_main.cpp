#include "session/private_session.h"

#include <csignal>
#include <exception>
#include <iostream>
#include <unistd.h>

namespace {

// Runs the command line in a session of its own and returns its exit code.
int run(const std::vector<std::string>& commandLine) {
  const sonvel::session::PrivateSession session;
  sonvel::session::ChildProcess process(
      session.command(commandLine.front(), {commandLine.begin() + 1, commandLine.end()}));
  return process.wait();
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: private-session COMMAND [ARGUMENT]...\n"
                 "Runs the command in a sound session of its own, with the sinks Speakers and Headphones,\n"
                 "and exits with the command's exit code.\n";
    return 2;
  }
  try {
    return run({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::cerr << "private-session: " << error.what() << '\n';
    return 125;
  }
}
