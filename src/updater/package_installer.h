#pragma once

#include "updater/update_file.h"

#include <QDBusConnection>
#include <filesystem>
#include <functional>
#include <memory>

namespace sonvel::updater {

/// Whether `update` is a package that installers know: .deb or .rpm.
bool isPackage(const VerifiedUpdate& update);

/// The desktop's package installer. It asks for the rights that it needs; this program never does. Main
/// thread.
class PackageInstaller {
 public:
  virtual ~PackageInstaller() = default;

  /// Passes a verified package on by a path to the open file itself. False if no installer accepts it. Keeps
  /// `package` until the installer has finished, or until the end of this program if it does not say.
  virtual bool install(std::shared_ptr<const VerifiedUpdate> package) = 0;
};

/// The session's org.freedesktop.PackageKit service, else the desktop's application for packages.
class DesktopPackageInstaller final : public PackageInstaller {
 public:
  explicit DesktopPackageInstaller(QDBusConnection session = QDBusConnection::sessionBus());

  /// Blocks for the session bus's list of services.
  bool install(std::shared_ptr<const VerifiedUpdate> package) override;

 private:
  bool hasService() const;
  void callService();

  QDBusConnection session_;
  std::shared_ptr<const VerifiedUpdate> package_;
};

} // namespace sonvel::updater
