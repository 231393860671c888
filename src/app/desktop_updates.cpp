#include "app/desktop_updates.h"

#include "ui/updates/update_window.h"

#include <QCoreApplication>
#include <QStandardPaths>
#include <QSysInfo>
#include <QVersionNumber>

namespace sonvel {
namespace {

updater::UpdaterEnvironment environmentOf(const DesktopUpdates::Needs& needs,
                                          updater::PackageInstaller& packageInstaller) {
  return {.clock = needs.clock,
          .preferences = needs.preferences,
          .packageInstaller = packageInstaller,
          .relaunch = needs.relaunch,
          .requestQuit = needs.requestQuit,
          .calendarTime = [] { return std::chrono::system_clock::now(); },
          .installation = updater::ownInstallation(),
          .installedVersion = QCoreApplication::applicationVersion(),
          // The kernel's own number; what a distribution appends would make it an earlier version.
          .systemVersion = QVersionNumber::fromString(QSysInfo::kernelVersion()).toString(),
          .downloadFolder = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                            QStringLiteral("/sonvel/updates")};
}

} // namespace

DesktopUpdates::DesktopUpdates(const Needs& needs)
    : updaters_(environmentOf(needs, packageInstaller_),
                [appearance = needs.appearance](UpdateSession& session) -> std::unique_ptr<UpdateSurface> {
                  return std::make_unique<UpdateWindow>(session, appearance);
                })
    , controller_(needs.bundle, updaters_) {}

} // namespace sonvel
