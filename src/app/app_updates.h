#pragma once

#include "model/update_checking.h"
#include "platform/appearance.h"
#include "platform/bundle_information.h"
#include "platform/clock.h"
#include "platform/preferences.h"
#include "updater/appcast_updater.h"
#include "updater/package_installer.h"
#include "updater/relaunch.h"
#include "updater/sparkle_update_controller.h"

#include <functional>

namespace sonvel {

/// Connects the updater with the program. The model uses it through UpdateChecking. Main thread.
class AppUpdates final : public UpdateChecking {
 public:
  /// What the updates need from the program; the referents outlive them.
  struct Environment {
    const BundleInformation& bundle;
    Clock& clock;
    Preferences& preferences;
    const DesktopAppearance& appearance; ///< of the updater's window
    updater::Relaunch& relaunch;         ///< records that a new version is to start after this process
    std::function<void()> requestQuit;   ///< asks the program to quit for an update
  };

  explicit AppUpdates(const Environment& environment);

  bool isAvailable() const override { return controller_.isAvailable(); }

  void checkForUpdates() override { controller_.checkForUpdates(); }

 private:
  updater::DesktopPackageInstaller packageInstaller_;
  updater::AppcastUpdaterProvider provider_;
  SparkleUpdateController controller_;
};

} // namespace sonvel
