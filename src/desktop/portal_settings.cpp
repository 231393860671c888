#include "desktop/portal_settings.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <utility>

namespace sonvel::desktop {
namespace {

constexpr QLatin1String kService("org.freedesktop.portal.Desktop");
constexpr QLatin1String kPath("/org/freedesktop/portal/desktop");
constexpr QLatin1String kInterface("org.freedesktop.portal.Settings");

/// Some portals wrap a value twice.
QVariant unwrapped(QVariant value) {
  while (value.metaType() == QMetaType::fromType<QDBusVariant>())
    value = value.value<QDBusVariant>().variant();
  return value;
}

} // namespace

PortalSettings::PortalSettings(const QDBusConnection& bus, QStringList groups, News news)
    : bus_(bus)
    , groups_(std::move(groups))
    , news_(std::move(news))
    , watcher_(kService, bus, QDBusServiceWatcher::WatchForRegistration) {
  connect(&watcher_, &QDBusServiceWatcher::serviceRegistered, this, &PortalSettings::readAll);
  qRegisterMetaType<QDBusVariant>(); // Qt looks up the slot's types by name
  bus_.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
               SLOT(settingChanged(QString, QString, QDBusVariant)));
  readAll();
}

void PortalSettings::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
  news_.one(group, key, unwrapped(value.variant()));
}

void PortalSettings::readAll() {
  auto call = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("ReadAll"));
  call << groups_;
  answer_ = std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(call));
  connect(answer_.get(), &QDBusPendingCallWatcher::finished, this, &PortalSettings::takeAnswer);
}

void PortalSettings::takeAnswer() {
  const auto reply = answer_->reply();
  if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("a{sa{sv}}")) return;
  auto groups = qdbus_cast<Groups>(reply.arguments().constFirst());
  for (auto& settings : groups)
    for (auto& value : settings)
      value = unwrapped(value);
  news_.all(groups);
}

} // namespace sonvel::desktop
