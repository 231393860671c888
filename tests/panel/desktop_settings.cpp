#include "panel/desktop_settings.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>

namespace sonvel::testing {

namespace {

constexpr auto kService = "org.freedesktop.portal.Desktop";
constexpr auto kPath = "/org/freedesktop/portal/desktop";
constexpr auto kInterface = "org.freedesktop.portal.Settings";
constexpr auto kAppearance = "org.freedesktop.appearance";
constexpr auto kColorScheme = "color-scheme";

} // namespace

DesktopSettings::DesktopSettings(const QDBusConnection& bus)
    : bus_(bus) {
  bus_.registerVirtualObject(kPath, this);
  bus_.registerService(kService);
}

DesktopSettings::~DesktopSettings() {
  bus_.unregisterService(kService);
  bus_.unregisterObject(kPath);
}

void DesktopSettings::setDark(bool isDark) {
  isDark_ = isDark;
  auto news = QDBusMessage::createSignal(kPath, kInterface, QStringLiteral("SettingChanged"));
  news << QString(kAppearance) << QString(kColorScheme) << QVariant::fromValue(QDBusVariant(colorScheme()));
  bus_.send(news);
}

QString DesktopSettings::introspect(const QString& /*path*/) const {
  return {};
}

bool DesktopSettings::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
  if (message.interface() != kInterface || message.member() != "ReadAll") return false;
  QDBusArgument answer;
  answer.beginMap(QMetaType::fromType<QString>(), QMetaType::fromType<QVariantMap>());
  answer.beginMapEntry();
  answer << QString(kAppearance) << QVariantMap{{kColorScheme, colorScheme()}};
  answer.endMapEntry();
  answer.endMap();
  return connection.send(message.createReply(QVariant::fromValue(answer)));
}

} // namespace sonvel::testing
