// A blue icon in the tray, which turns red when it is clicked. Says what it does and what is done to it, and
// ends with its input.
#include "ui/shell/tray_icon.h"

#include <QApplication>
#include <QPixmap>
#include <QSocketNotifier>
#include <iostream>
#include <string_view>
#include <unistd.h>

namespace {

void say(std::string_view line) {
  std::cout << line << std::endl; // at once
}

QIcon square(const QColor& color) {
  QPixmap pixmap(22, 22);
  pixmap.fill(color);
  return QIcon(pixmap);
}

} // namespace

int main(int argc, char** argv) {
  using sonvel::ui::TrayIcon;
  QApplication application(argc, argv);
  QApplication::setApplicationName("Sonvel");
  TrayIcon icon(square(Qt::blue));
  QObject::connect(&icon, &TrayIcon::shownChanged,
                   [](bool isShown) { say(isShown ? "shown" : "not shown"); });
  QObject::connect(&icon, &TrayIcon::clicked, [&] {
    icon.setIcon(square(Qt::red));
    say("clicked");
  });
  QObject::connect(&icon, &TrayIcon::openChosen, [] { say("open"); });
  QObject::connect(&icon, &TrayIcon::quitChosen, [] { say("quit"); });
  say(!icon.isShown() ? "unknown" : *icon.isShown() ? "shown" : "not shown");
  QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &application, &QApplication::quit);
  return QApplication::exec();
}
