// A small program that updates itself like Sonvel, with a user who accepts every offer. The last line of its
// own file is its version; a version with "-dies" or "-hangs" at its end does that. It logs to the file "log"
// in the folder SONVEL_TEST_FOLDER.
#include "app/app_updates.h"
#include "app/single_instance.h"
#include "desktop/program_bundle.h"
#include "desktop/settings_preferences.h"
#include "desktop/steady_clock.h"
#include "ui/updates/update_presenter.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QSslConfiguration>
#include <QTimer>
#include <csignal>
#include <unistd.h>

namespace sonvel {
namespace {

QString ownVersion() {
  QFile file(QStringLiteral("/proc/self/exe"));
  if (!file.open(QIODevice::ReadOnly)) std::abort();
  file.seek(file.size() - 64);
  return QString::fromLatin1(file.readAll().split('\n').last());
}

void log(const QString& line) {
  QFile file(qEnvironmentVariable("SONVEL_TEST_FOLDER") + QStringLiteral("/log"));
  if (!file.open(QIODevice::Append)) std::abort();
  file.write(
      (QGuiApplication::applicationVersion() + QStringLiteral(": ") + line).toUtf8().replace('\n', ' ') +
      '\n');
}

struct PlainAppearance final : DesktopAppearance {
  Appearance current() const override { return {}; }

  void onChange(std::function<void()>) override {}
};

/// Reads the window's texts and presses whatever can be pressed.
void useWindow() {
  static QString seen;
  for (QWindow* window : QGuiApplication::topLevelWindows()) {
    auto* view = qobject_cast<QQuickView*>(window);
    if (view == nullptr || !view->isVisible() || view->rootObject() == nullptr) continue;
    auto* presenter = view->rootObject()->property("presenter").value<UpdatePresenter*>();
    if (std::exchange(seen, presenter->heading()) == presenter->heading()) return;
    log(presenter->heading() + QStringLiteral(" | ") + presenter->detail());
    const QString take = presenter->acceptLabel();
    if (take == QLatin1String("Download") || take == QLatin1String("Install and Relaunch"))
      presenter->accept();
  }
}

void run(updater::Relaunch& relaunch) {
  const QString folder = qEnvironmentVariable("SONVEL_TEST_FOLDER");
  SingleInstance instance({.showPanel = [](const LaunchToken&) { return true; },
                           .quit = [] { QCoreApplication::quit(); },
                           .admits = [](const QString&) { return true; }},
                          LaunchToken{});
  if (QGuiApplication::applicationVersion().endsWith(QLatin1String("-hangs"))) ::pause();
  if (instance.acquire() != SingleInstance::Outcome::first) std::abort();
  if (QGuiApplication::applicationVersion().endsWith(QLatin1String("-dies"))) ::raise(SIGKILL);
  log(QStringLiteral("starts"));
  QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
  trusting.addCaCertificates(folder + QStringLiteral("/trusted.pem"));
  QSslConfiguration::setDefaultConfiguration(trusting);
  desktop::SteadyClock clock;
  desktop::SettingsPreferences preferences((folder + QStringLiteral("/preferences")).toStdString());
  const desktop::ProgramBundle bundle((folder + QStringLiteral("/information.json")).toStdString());
  const PlainAppearance appearance;
  const bool isBack = qEnvironmentVariableIsSet("SONVEL_UPDATE_UNDONE");
  AppUpdates updates({.bundle = bundle,
                      .clock = clock,
                      .preferences = preferences,
                      .appearance = appearance,
                      .relaunch = relaunch,
                      .requestQuit = [] { QCoreApplication::quit(); }});
  QTimer user;
  QObject::connect(&user, &QTimer::timeout, &useWindow);
  user.start(5);
  if (!isBack) updates.checkForUpdates();
  QGuiApplication::exec();
  log(QStringLiteral("ends"));
}

} // namespace
} // namespace sonvel

int main(int argc, char** argv) {
  using std::chrono::milliseconds;
  sonvel::updater::Relaunch relaunch({milliseconds(3'000), milliseconds(300), milliseconds(1'000)});
  QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  QGuiApplication::setApplicationVersion(sonvel::ownVersion());
  sonvel::run(relaunch);
  relaunch.perform();
  return 0;
}
