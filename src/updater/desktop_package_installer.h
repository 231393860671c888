#pragma once

#include "updater/package_installer.h"

#include <QDBusConnection>

namespace sonvel::updater {

/// The session's org.freedesktop.PackageKit service where there is one, else the application that the desktop
/// opens packages with.
class DesktopPackageInstaller final : public PackageInstaller {
 public:
  explicit DesktopPackageInstaller(QDBusConnection session = QDBusConnection::sessionBus());

  /// Asks the session bus which services there are, and waits for that answer.
  bool install(const std::filesystem::path& package, std::function<void()> finished) override;

 private:
  bool hasService() const;
  void callService(const QString& package, std::function<void()> finished);

  QDBusConnection session_;
};

} // namespace sonvel::updater
