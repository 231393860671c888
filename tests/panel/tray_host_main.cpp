// A desktop's tray for scripts, on the session bus of its environment. Says "item <bus name> <title>" for
// each icon that comes and "gone <bus name>" for each that goes. Takes lines: "activate" clicks on the first
// icon, "choose <label>" chooses from its menu, "describe" says what it is. Ends with its input.
#include "panel/tray_host.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <iostream>
#include <string>
#include <unistd.h>

namespace {

using sonvel::testing::TrayHost;

void say(const QString& line) {
  std::cout << line.toStdString() << std::endl; // at once
}

void describe(const TrayHost& host, const QString& item) {
  say("id " + host.property(item, "Id").toString());
  say("title " + host.property(item, "Title").toString());
  say("tooltip " + host.toolTipTitle(item));
  say("menu " + host.menu(item).join(", "));
}

void obey(const TrayHost& host, const QString& line) {
  const QString choose = QStringLiteral("choose ");
  if (host.items().isEmpty()) {
    say("no item");
  } else if (line == "activate") {
    host.activate(host.items().first());
  } else if (line == "describe") {
    describe(host, host.items().first());
  } else if (line.startsWith(choose) && host.choose(host.items().first(), line.mid(choose.size()))) {
    say("chosen");
  } else {
    say("not understood");
  }
}

} // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  const TrayHost host(QDBusConnection::sessionBus());
  QObject::connect(&host, &TrayHost::StatusNotifierItemRegistered, &application, [&](const QString& item) {
    say("item " + item + " " + host.property(item, "Title").toString());
  });
  QObject::connect(&host, &TrayHost::StatusNotifierItemUnregistered, &application,
                   [](const QString& item) { say("gone " + item); });
  say("ready");

  std::string unread;
  QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &application, [&] {
    char letter = 0;
    if (read(STDIN_FILENO, &letter, 1) != 1) {
      QCoreApplication::quit();
    } else if (letter != '\n') {
      unread += letter;
    } else {
      obey(host, QString::fromStdString(std::exchange(unread, {})));
    }
  });
  return QCoreApplication::exec();
}
