#include "app/app_updates.h"

#include "ui/updates/update_window.h"

#include <QCoreApplication>
#include <QStandardPaths>
#include <QSysInfo>
#include <QVersionNumber>

namespace sonvel {

namespace {

updater::UpdaterEnvironment updaterEnvironment(const AppUpdates::Environment& environment,
                                               updater::PackageInstaller& packageInstaller) {
  return {.clock = environment.clock,
          .preferences = environment.preferences,
          .packageInstaller = packageInstaller,
          .relaunch = environment.relaunch,
          .requestQuit = environment.requestQuit,
          .calendarTime = &std::chrono::system_clock::now,
          .installation = updater::ownInstallation(),
          .installedVersion = QCoreApplication::applicationVersion(),
          .systemVersion = QVersionNumber::fromString(QSysInfo::kernelVersion()).toString(),
          .downloadFolder =
              QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + QStringLiteral("/updates")};
}

} // namespace

AppUpdates::AppUpdates(const Environment& environment)
    : provider_(updaterEnvironment(environment, packageInstaller_),
                [&appearance = environment.appearance](UpdateSession& session) {
                  return std::make_unique<UpdateWindow>(session,
                                                        [&appearance] { return appearance.current(); });
                })
    , controller_(environment.bundle, provider_) {}

} // namespace sonvel
