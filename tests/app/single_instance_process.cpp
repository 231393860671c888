// Tells on standard output what SingleInstance does. "slow": the event loop starts when a line comes in.
// "leaving": declines to show a panel, and ends when a line comes in.
#include "app/single_instance.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <iostream>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

void waitForLine() {
  std::string line;
  std::getline(std::cin, line);
}

void say(std::string_view line) {
  std::cout << line << std::endl; // at once
}

} // namespace

int main(int argc, char** argv) {
  using sonvel::SingleInstance;
  const QCoreApplication application(argc, argv);
  const std::string_view mode = argc > 1 ? argv[1] : "";
  SingleInstance instance({.showPanel =
                               [mode] {
                                 say("show");
                                 return mode != "leaving";
                               },
                           .quit =
                               [] {
                                 say("quit");
                                 QCoreApplication::quit();
                               }});
  switch (instance.acquire()) {
  case SingleInstance::Outcome::toldTheFirst:
    say("told");
    return 0;
  case SingleInstance::Outcome::firstDoesNotAnswer:
    say("silent");
    return 0;
  case SingleInstance::Outcome::noBus:
    say("no bus");
    return 0;
  case SingleInstance::Outcome::first:
    say("first");
  }
  if (mode == "slow") waitForLine();
  QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
  return QCoreApplication::exec();
}
