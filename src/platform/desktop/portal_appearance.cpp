#include "platform/desktop/portal_appearance.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QObject>
#include <array>
#include <cmath>
#include <utility>

namespace sonvel::desktop {
namespace {

constexpr QLatin1String kService("org.freedesktop.portal.Desktop");
constexpr QLatin1String kPath("/org/freedesktop/portal/desktop");
constexpr QLatin1String kInterface("org.freedesktop.portal.Settings");

constexpr QLatin1String kAppearanceGroup("org.freedesktop.appearance");
constexpr QLatin1String kGnomeGroup("org.gnome.desktop.interface");

/// Some portals wrap a value once more than they should.
QVariant unwrapped(QVariant value) {
  while (value.metaType() == QMetaType::fromType<QDBusVariant>())
    value = value.value<QDBusVariant>().variant();
  return value;
}

Appearance::ColorScheme colorSchemeFrom(const QVariant& value) {
  switch (value.toUInt()) {
  case 1:
    return Appearance::ColorScheme::dark;
  case 2:
    return Appearance::ColorScheme::light;
  default:
    return Appearance::ColorScheme::noPreference;
  }
}

/// Red, green and blue from 0 to 1. A colour out of this range says that there is none.
std::optional<std::uint32_t> accentColorFrom(const QVariant& value) {
  if (value.metaType() != QMetaType::fromType<QDBusArgument>()) return std::nullopt;
  const auto argument = value.value<QDBusArgument>();
  if (argument.currentSignature() != QLatin1String("(ddd)")) return std::nullopt;
  std::array<double, 3> channels{};
  argument.beginStructure();
  argument >> channels[0] >> channels[1] >> channels[2];
  argument.endStructure();

  std::uint32_t color = 0;
  for (const double channel : channels) {
    if (!(channel >= 0 && channel <= 1)) return std::nullopt;
    color = color << 8 | static_cast<std::uint32_t>(std::lround(channel * 255));
  }
  return color;
}

/// What the portal's settings mean for the appearance.
struct Settings {
  Appearance::ColorScheme colorScheme = Appearance::ColorScheme::noPreference;
  std::optional<std::uint32_t> accentColor;
  bool reducesMotion = false;
  bool hasNoAnimations = false; ///< the older setting for the same wish

  void apply(const QString& group, const QString& key, const QVariant& wrapped) {
    const auto value = unwrapped(wrapped);
    if (group == kAppearanceGroup && key == QLatin1String("color-scheme"))
      colorScheme = colorSchemeFrom(value);
    else if (group == kAppearanceGroup && key == QLatin1String("accent-color"))
      accentColor = accentColorFrom(value);
    else if (group == kAppearanceGroup && key == QLatin1String("reduced-motion"))
      reducesMotion = value.toUInt() == 1;
    else if (group == kGnomeGroup && key == QLatin1String("enable-animations"))
      hasNoAnimations = value.metaType() == QMetaType::fromType<bool>() && !value.toBool();
  }

  Appearance appearance() const {
    return {.colorScheme = colorScheme,
            .accentColor = accentColor,
            .prefersReducedMotion = reducesMotion || hasNoAnimations};
  }
};

std::optional<Settings> settingsFrom(const QDBusMessage& reply) {
  if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("a{sa{sv}}"))
    return std::nullopt;
  Settings settings;
  const auto groups = qdbus_cast<QMap<QString, QVariantMap>>(reply.arguments().constFirst());
  for (auto group = groups.begin(); group != groups.end(); ++group)
    for (auto item = group->begin(); item != group->end(); ++item)
      settings.apply(group.key(), item.key(), item.value());
  return settings;
}

} // namespace

class PortalAppearance::Listener final : public QObject {
  Q_OBJECT

 public:
  explicit Listener(const QDBusConnection& bus)
      : bus_(bus)
      , watcher_(kService, bus, QDBusServiceWatcher::WatchForRegistration) {
    connect(&watcher_, &QDBusServiceWatcher::serviceRegistered, this, &Listener::readAll);
    qRegisterMetaType<QDBusVariant>(); // Qt looks the slot's types up by name
    bus_.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                 SLOT(settingChanged(QString, QString, QDBusVariant)));
    readAll();
  }

  Appearance current() const { return settings_.appearance(); }

  void onChange(std::function<void()> changed) { changed_ = std::move(changed); }

 private Q_SLOTS:

  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    auto settings = settings_;
    settings.apply(group, key, value.variant());
    become(settings);
  }

 private:
  void readAll() {
    auto call = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("ReadAll"));
    call << QStringList{kAppearanceGroup, kGnomeGroup};
    answer_ = std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(call));
    connect(answer_.get(), &QDBusPendingCallWatcher::finished, this, [this] {
      if (const auto settings = settingsFrom(answer_->reply())) become(*settings);
    });
  }

  void become(const Settings& settings) {
    const auto before = current();
    settings_ = settings;
    if (current() != before && changed_) changed_();
  }

  QDBusConnection bus_;
  QDBusServiceWatcher watcher_;
  std::unique_ptr<QDBusPendingCallWatcher> answer_; ///< to the latest question
  Settings settings_;
  std::function<void()> changed_;
};

PortalAppearance::PortalAppearance()
    : PortalAppearance(QDBusConnection::sessionBus()) {}

PortalAppearance::PortalAppearance(const QDBusConnection& bus)
    : listener_(std::make_unique<Listener>(bus)) {}

PortalAppearance::~PortalAppearance() = default;

Appearance PortalAppearance::current() const {
  return listener_->current();
}

void PortalAppearance::onChange(std::function<void()> changed) {
  listener_->onChange(std::move(changed));
}

} // namespace sonvel::desktop

#include "portal_appearance.moc"
