#pragma once

#include "model/update_checking.h"
#include "platform/appearance.h"
#include "platform/bundle_information.h"
#include "platform/clock.h"
#include "platform/preferences.h"
#include "platform/updater/appcast_updater.h"
#include "platform/updater/desktop_package_installer.h"
#include "platform/updater/relaunch.h"
#include "updates/sparkle_update_controller.h"

#include <functional>

namespace sonvel {

/// The program's updates on a real desktop: the controller, the updater behind it and the window that shows
/// it. Needs a QGuiApplication whose version is set and whose last closed window doesn't end it. Main thread.
class DesktopUpdates final : public UpdateChecking {
 public:
  /// Everything referred to lives longer, `bundle` aside, which is used in the constructor only.
  struct Needs {
    const BundleInformation& bundle;
    Clock& clock;
    Preferences& preferences;
    updater::Relaunch& relaunch;            ///< to be performed when all else of the process is gone
    std::function<Appearance()> appearance; ///< as it is now
    std::function<void()> requestQuit;      ///< asks the program to end, for the new one to start
  };

  /// Starts the updates of a build that has a valid configuration.
  explicit DesktopUpdates(const Needs& needs);

  bool isAvailable() const override { return controller_.isAvailable(); }

  void checkForUpdates() override { controller_.checkForUpdates(); }

 private:
  updater::DesktopPackageInstaller packageInstaller_;
  updater::AppcastUpdaterProvider updaters_;
  SparkleUpdateController controller_;
};

} // namespace sonvel
