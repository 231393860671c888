// Says "quit" for each request to quit, and "done" after a line came in, which ends the quitting and itself.
// "child": says what mask of blocked signals a child process begins with.
#include "app/quit_requests.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTimer>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

void say(std::string_view line) {
  std::cout << line << std::endl; // at once
}

void sayBlockedSignalsOfChild() {
  QProcess child;
  child.start("grep", {"SigBlk", "/proc/self/status"});
  child.waitForFinished();
  std::cout << child.readAllStandardOutput().toStdString() << std::flush;
}

} // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  const std::string_view mode = argc > 1 ? argv[1] : "";
  auto requests = std::make_unique<sonvel::QuitRequests>([] { say("quit"); });
  if (mode == "child") sayBlockedSignalsOfChild();
  QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &application, [] { QCoreApplication::exit(3); });
  QTimer::singleShot(0, [&] {
    say("ready");
    if (mode == "self") QCoreApplication::quit();
  });
  const int result = QCoreApplication::exec();
  requests.reset();
  say("done");
  for (std::string line; mode == "late" && line != "end";) // for a signal after all is over
    std::getline(std::cin, line);
  return result;
}
