#pragma once

#include "updater/update_file.h"

#include <QDBusConnection>
#include <filesystem>
#include <functional>
#include <memory>

namespace sonvel::updater {

/// Whether `update` is a package of a kind that installers know: .deb or .rpm.
bool isPackage(const VerifiedUpdate& update);

/// The program with which this desktop lets its user install packages. It asks for the rights it needs; this
/// program never does. Main thread.
class PackageInstaller {
 public:
  virtual ~PackageInstaller() = default;

  /// Hands over a verified package by a path that leads to the open file itself. False if nothing takes it.
  /// Keeps `package` until the installer says that it is done, or to the end of this program where none says
  /// so.
  virtual bool install(std::shared_ptr<const VerifiedUpdate> package) = 0;
};

/// The session's org.freedesktop.PackageKit service where there is one, else the application that the desktop
/// opens packages with.
class DesktopPackageInstaller final : public PackageInstaller {
 public:
  explicit DesktopPackageInstaller(QDBusConnection session = QDBusConnection::sessionBus());

  /// Asks the session bus for its services, and waits for the answer.
  bool install(std::shared_ptr<const VerifiedUpdate> package) override;

 private:
  bool hasService() const;
  void callService();

  QDBusConnection session_;
  std::shared_ptr<const VerifiedUpdate> package_;
};

} // namespace sonvel::updater
