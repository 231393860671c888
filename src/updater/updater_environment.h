#pragma once

#include "platform/clock.h"
#include "platform/preferences.h"
#include "updater/installation.h"
#include "updater/package_installer.h"
#include "updater/relaunch.h"

#include <QString>
#include <chrono>
#include <functional>

namespace sonvel::updater {

/// What an updater needs of the program and the system around it. Everything referred to lives longer than
/// the updater.
struct UpdaterEnvironment {
  Clock& clock;
  Preferences& preferences;
  PackageInstaller& packageInstaller;
  Relaunch& relaunch;
  std::function<void()> requestQuit; ///< asks the program to end; it then performs `relaunch`
  std::function<std::chrono::system_clock::time_point()> calendarTime;
  Installation installation;
  QString installedVersion;
  QString systemVersion;  ///< what a minimum system version is compared with
  QString downloadFolder; ///< the user's own; made if need be
};

} // namespace sonvel::updater
