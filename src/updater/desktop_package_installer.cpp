#include "updater/desktop_package_installer.h"

#include "updater/default_application.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QVariantMap>
#include <limits>
#include <memory>
#include <utility>

namespace sonvel::updater {
namespace {

const QString kService = QStringLiteral("org.freedesktop.PackageKit");
const QString kPath = QStringLiteral("/org/freedesktop/PackageKit");
const QString kInterface = QStringLiteral("org.freedesktop.PackageKit.Modify2");
const QString kDesktopEntry = QStringLiteral("com.quellmarsh.sonvel");

} // namespace

DesktopPackageInstaller::DesktopPackageInstaller(QDBusConnection session)
    : session_(std::move(session)) {}

bool DesktopPackageInstaller::install(const std::filesystem::path& package, std::function<void()> finished) {
  if (!hasService()) return openWithDefaultApplication(package);
  callService(QString::fromStdString(package.string()), std::move(finished));
  return true;
}

bool DesktopPackageInstaller::hasService() const {
  const QDBusConnectionInterface* bus = session_.interface();
  if (bus == nullptr) return false;
  return bus->isServiceRegistered(kService).value() ||
         bus->activatableServiceNames().value().contains(kService);
}

void DesktopPackageInstaller::callService(const QString& package, std::function<void()> finished) {
  QDBusMessage call =
      QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("InstallPackageFiles"));
  call.setArguments({QStringList{package}, QString(), kDesktopEntry, QVariantMap()});
  // The answer comes when the user is done with it.
  auto watcher =
      std::make_unique<QDBusPendingCallWatcher>(session_.asyncCall(call, std::numeric_limits<int>::max()));
  QDBusPendingCallWatcher* pending = watcher.release(); // deletes itself when the answer is there
  QObject::connect(pending, &QDBusPendingCallWatcher::finished, pending,
                   [finished = std::move(finished), pending] {
                     pending->deleteLater();
                     finished();
                   });
}

} // namespace sonvel::updater
