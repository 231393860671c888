// A desktop's tray and settings for scripts, on the session bus of its environment. Says "item <bus name>
// <title>" for each icon that comes and "gone <bus name>" for each that goes. Takes lines: "activate" clicks
// on the first icon, "choose <label>" chooses from its menu, "describe" says what it is, "scheme dark" and
// "scheme light" set the colour scheme, "no tray" and "tray" take the tray away and bring it back. Ends with
// its input.
#include "panel/desktop_settings.h"
#include "panel/tray_host.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <iostream>
#include <optional>
#include <string>
#include <unistd.h>

namespace {

using sonvel::testing::DesktopSettings;
using sonvel::testing::TrayHost;

void say(const QString& line) {
  std::cout << line.toStdString() << std::endl; // at once
}

void describe(const TrayHost& host, const QString& item) {
  say("id " + host.property(item, "Id").toString());
  say("title " + host.property(item, "Title").toString());
  say("tooltip " + host.toolTipTitle(item));
  say("color " + host.color(item).name());
  say("menu " + host.menu(item).join(", "));
}

void obeyTray(const TrayHost& host, const QString& line) {
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

/// The part of a desktop that this program is.
class Desktop {
 public:
  Desktop() { showTray(); }

  void obey(const QString& line) {
    if (line.startsWith(QStringLiteral("scheme "))) {
      settings_.setDark(line.endsWith(QStringLiteral("dark")));
    } else if (line == "no tray") {
      tray_.reset();
    } else if (line == "tray") {
      showTray();
    } else if (tray_) {
      obeyTray(*tray_, line);
    } else {
      say("no tray");
    }
  }

 private:
  void showTray() {
    tray_.emplace(QDBusConnection::sessionBus());
    QObject::connect(&*tray_, &TrayHost::StatusNotifierItemRegistered, &*tray_, [this](const QString& item) {
      say("item " + item + " " + tray_->property(item, "Title").toString());
    });
    QObject::connect(&*tray_, &TrayHost::StatusNotifierItemUnregistered, &*tray_,
                     [](const QString& item) { say("gone " + item); });
  }

  DesktopSettings settings_{QDBusConnection::sessionBus()};
  std::optional<TrayHost> tray_;
};

} // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  Desktop desktop;
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
      desktop.obey(QString::fromStdString(std::exchange(unread, {})));
    }
  });
  return QCoreApplication::exec();
}
