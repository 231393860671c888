#include "app/app_updates.h"

#include "ui/updates/update_window.h"

#include <QCoreApplication>
#include <QSysInfo>
#include <QVersionNumber>

namespace sonvel {

namespace {

/// Set at build time for a program that is one file. Without it only a running AppImage counts as one file.
bool isMarkedAsOneFile(const BundleInformation& bundle) {
  const auto mark = bundle.objectForInfoKey("AppUpdateReplacesProgramFile");
  return mark == BundleInformation::InfoObject(true);
}

updater::UpdaterEnvironment updaterEnvironment(const AppUpdates::Environment& environment,
                                               updater::PackageInstaller& packageInstaller) {
  return {.clock = environment.clock,
          .preferences = environment.preferences,
          .packageInstaller = packageInstaller,
          .relaunch = environment.relaunch,
          .requestQuit = environment.requestQuit,
          .calendarTime = &std::chrono::system_clock::now,
          .installation = updater::ownInstallation(isMarkedAsOneFile(environment.bundle)),
          .product = QString::fromStdString(environment.bundle.bundleIdentifier().value_or(std::string())),
          .installedVersion = QCoreApplication::applicationVersion(),
          .systemVersion = QVersionNumber::fromString(QSysInfo::kernelVersion()).toString(),
          .architecture = QSysInfo::buildCpuArchitecture()};
}

} // namespace

AppUpdates::AppUpdates(const Environment& environment)
    : provider_(updaterEnvironment(environment, packageInstaller_),
                [&appearance = environment.appearance](UpdateRun& run) {
                  return std::make_unique<UpdateWindow>(run, [&appearance] { return appearance.current(); });
                })
    , controller_(environment.bundle, provider_) {}

} // namespace sonvel
