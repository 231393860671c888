#include "desktop/portal_appearance.h"

#include "desktop/portal_settings.h"

#include <QDBusArgument>
#include <array>
#include <cmath>
#include <utility>

namespace sonvel::desktop {
namespace {

constexpr QLatin1String kAppearanceGroup("org.freedesktop.appearance");
constexpr QLatin1String kGnomeGroup("org.gnome.desktop.interface");
constexpr QLatin1String kAccessGroup("org.gnome.desktop.a11y.interface");

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

/// Red, green and blue from 0 to 1. A value out of range means no accent colour.
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
    if (!std::isfinite(channel) || channel < 0 || channel > 1) return std::nullopt;
    color = color << 8 | static_cast<std::uint32_t>(std::lround(channel * 255));
  }
  return color;
}

/// The portal's settings that affect the appearance.
struct Settings {
  Appearance::ColorScheme colorScheme = Appearance::ColorScheme::noPreference;
  std::optional<std::uint32_t> accentColor;
  bool reducesMotion = false;
  bool hasNoAnimations = false; ///< an older setting with the same meaning as reduced motion
  bool hasHighContrast = false;
  bool hasGnomeContrast = false; ///< an older setting with the same meaning
  bool hasContrastTheme = false; ///< the same, from the name of the toolkit's theme

  void apply(const QString& group, const QString& key, const QVariant& value) {
    if (group == kAppearanceGroup && key == QLatin1String("color-scheme"))
      colorScheme = colorSchemeFrom(value);
    else if (group == kAppearanceGroup && key == QLatin1String("accent-color"))
      accentColor = accentColorFrom(value);
    else if (group == kAppearanceGroup && key == QLatin1String("reduced-motion"))
      reducesMotion = value.toUInt() == 1;
    else if (group == kAppearanceGroup && key == QLatin1String("contrast"))
      hasHighContrast = value.toUInt() == 1;
    else if (group == kAccessGroup && key == QLatin1String("high-contrast"))
      hasGnomeContrast = value.toBool();
    else if (group == kGnomeGroup && key == QLatin1String("gtk-theme"))
      hasContrastTheme = value.toString().startsWith(QLatin1String("HighContrast"));
    else if (group == kGnomeGroup && key == QLatin1String("enable-animations"))
      hasNoAnimations = value.metaType() == QMetaType::fromType<bool>() && !value.toBool();
  }

  void apply(const PortalSettings::Groups& groups) {
    for (auto group = groups.begin(); group != groups.end(); ++group)
      for (auto item = group->begin(); item != group->end(); ++item)
        apply(group.key(), item.key(), item.value());
  }

  Appearance appearance() const {
    return {.colorScheme = colorScheme,
            .accentColor = accentColor,
            .prefersHighContrast = hasHighContrast || hasGnomeContrast || hasContrastTheme,
            .prefersReducedMotion = reducesMotion || hasNoAnimations};
  }
};

} // namespace

class PortalAppearance::Follower {
 public:
  explicit Follower(const QDBusConnection& bus)
      : portal_(bus, {kAppearanceGroup, kGnomeGroup, kAccessGroup},
                {.all = [this](const auto& groups) { become(Settings(), groups); },
                 .one = [this](const auto&... setting) { become(settings_, setting...); }}) {}

  Appearance current() const { return settings_.appearance(); }

  void onChange(std::function<void()> changed) { changed_ = std::move(changed); }

 private:
  template <typename... News> void become(Settings settings, const News&... news) {
    settings.apply(news...);
    const auto before = std::exchange(settings_, settings).appearance();
    if (current() != before && changed_) changed_();
  }

  Settings settings_;
  std::function<void()> changed_;
  PortalSettings portal_;
};

PortalAppearance::PortalAppearance()
    : PortalAppearance(QDBusConnection::sessionBus()) {}

PortalAppearance::PortalAppearance(const QDBusConnection& bus)
    : follower_(std::make_unique<Follower>(bus)) {}

PortalAppearance::~PortalAppearance() = default;

Appearance PortalAppearance::current() const {
  return follower_->current();
}

void PortalAppearance::onChange(std::function<void()> changed) {
  follower_->onChange(std::move(changed));
}

} // namespace sonvel::desktop
