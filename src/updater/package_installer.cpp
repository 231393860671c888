#include "updater/package_installer.h"

#include "platform/descriptor_limit.h"
#include "updater/relaunch.h"

#include <gio/gdesktopappinfo.h>

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <limits>
#include <utility>

namespace sonvel::updater {
namespace {

const QString kService = QStringLiteral("org.freedesktop.PackageKit");
const QString kPath = QStringLiteral("/org/freedesktop/PackageKit");
const QString kInterface = QStringLiteral("org.freedesktop.PackageKit.Modify2");
const QString kDesktopEntry = QStringLiteral("com.quellmarsh.sonvel");

struct Release {
  void operator()(gpointer object) const { g_object_unref(object); }

  void operator()(char* text) const { g_free(text); }
};

template <typename Type> using GPtr = std::unique_ptr<Type, Release>;

/// This program's environment without an AppImage's changes.
GPtr<GAppLaunchContext> launchContext() {
  GPtr<GAppLaunchContext> context(g_app_launch_context_new());
  const QProcessEnvironment own = QProcessEnvironment::systemEnvironment();
  const QProcessEnvironment outside = environmentOutsideImage(own);
  for (const QString& name : own.keys()) {
    if (outside.contains(name))
      g_app_launch_context_setenv(context.get(), qPrintable(name), qPrintable(outside.value(name)));
    else
      g_app_launch_context_unsetenv(context.get(), qPrintable(name));
  }
  return context;
}

/// False if the desktop has no application for the file's type, or it can't be started. The type is detected
/// by content, since the path has no suffix.
bool openWithDefaultApplication(const VerifiedUpdate& package) {
  const auto* content = reinterpret_cast<const guchar*>(package.bytes().data());
  const GPtr<char> type(g_content_type_guess(nullptr, content, package.bytes().size(), nullptr));
  const GPtr<GAppInfo> application(type ? g_app_info_get_default_for_type(type.get(), FALSE) : nullptr);
  if (!application) return false;
  const GPtr<char> address(g_filename_to_uri(package.path().c_str(), nullptr, nullptr));
  GList addresses{.data = address.get(), .next = nullptr, .prev = nullptr};
  const auto prepareChild = [](gpointer) { RaisedDescriptorLimit::lowerFor(0); };
  return g_desktop_app_info_launch_uris_as_manager(G_DESKTOP_APP_INFO(application.get()), &addresses,
                                                   launchContext().get(), G_SPAWN_SEARCH_PATH, prepareChild,
                                                   nullptr, nullptr, nullptr, nullptr) != FALSE;
}

} // namespace

bool isPackage(const VerifiedUpdate& update) {
  return update.startsWith("!<arch>\ndebian-binary") || update.startsWith("\xed\xab\xee\xdb");
}

DesktopPackageInstaller::DesktopPackageInstaller(QDBusConnection session)
    : session_(std::move(session)) {}

bool DesktopPackageInstaller::install(std::shared_ptr<const VerifiedUpdate> package) {
  package_ = std::move(package);
  if (!hasService()) return openWithDefaultApplication(*package_);
  callService();
  return true;
}

bool DesktopPackageInstaller::hasService() const {
  const QDBusConnectionInterface* bus = session_.interface();
  if (bus == nullptr) return false;
  return bus->isServiceRegistered(kService).value() ||
         bus->activatableServiceNames().value().contains(kService);
}

void DesktopPackageInstaller::callService() {
  QDBusMessage call =
      QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("InstallPackageFiles"));
  const QString path = QString::fromStdString(package_->path().string());
  call.setArguments({QStringList{path}, QString(), kDesktopEntry, QVariantMap()});
  // The reply arrives when the user has finished.
  auto watcher =
      std::make_unique<QDBusPendingCallWatcher>(session_.asyncCall(call, std::numeric_limits<int>::max()));
  QDBusPendingCallWatcher* pending = watcher.release(); // deletes itself after the reply
  QObject::connect(pending, &QDBusPendingCallWatcher::finished, pending,
                   [package = package_, pending] { pending->deleteLater(); });
}

} // namespace sonvel::updater
