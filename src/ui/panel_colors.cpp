#include "ui/panel_colors.h"

#include "ui/contrast.h"

#include <array>

namespace sonvel {
namespace {

using contrast::legible;
using contrast::over;

/// A window on which black or white text has less than this leaves no room for text that steps back.
constexpr double kWindowRatio = 11.0;

struct Base {
  QColor window;
  QColor primary;
  QColor blue;
  QColor orange;
  QColor red;
  QColor green;
  QColor yellow;
};

const Base& base(bool isDark) {
  static const Base kDark{.window = 0x1f2023,
                          .primary = 0xf2f2f4,
                          .blue = 0x3b9cff,
                          .orange = 0xff9f0a,
                          .red = 0xff6961,
                          .green = 0x30d158,
                          .yellow = 0xffd60a};
  static const Base kLight{.window = 0xf6f6f7,
                           .primary = 0x1d1d1f,
                           .blue = 0x0a6cff,
                           .orange = 0xf08000,
                           .red = 0xe0302a,
                           .green = 0x28b84c,
                           .yellow = 0xf2b600};
  return isDark ? kDark : kLight;
}

bool isDark(const QColor& color) {
  return contrast::ratio(Qt::white, color) > contrast::ratio(Qt::black, color);
}

bool wantsDark(const Appearance& appearance, const QPalette& palette) {
  if (appearance.colorScheme == Appearance::ColorScheme::noPreference)
    return isDark(palette.color(QPalette::Active, QPalette::Window));
  return appearance.colorScheme == Appearance::ColorScheme::dark;
}

QColor windowColor(const QPalette& palette, bool isDarkWanted) {
  const QColor own = palette.color(QPalette::Active, QPalette::Window).rgb();
  const bool isUsable = isDark(own) == isDarkWanted &&
                        contrast::ratio(isDarkWanted ? Qt::white : Qt::black, own) >= kWindowRatio;
  return isUsable ? own : base(isDarkWanted).window;
}

QColor accentColor(const Appearance& appearance, const QPalette& palette, bool isDarkWanted) {
  if (appearance.accentColor) return QColor::fromRgb(*appearance.accentColor);
  const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight).rgb();
  constexpr int kColourful = 64; // a grey highlight would look like no choice at all
  return highlight.hsvSaturation() >= kColourful ? highlight : base(isDarkWanted).blue;
}

/// The backgrounds on which text is shown, each a paused row's worst case of what it stands for.
class Backgrounds {
 public:
  Backgrounds(const QColor& window, const QColor& fill, const QColor& control)
      : surfaces_{window, fill, control} {}

  /// As little away from `color` as can be read on all of them.
  QColor legibleOnAll(QColor color, double minimumRatio) const {
    for (const auto& surface : surfaces_)
      color = legible(color, surface, minimumRatio);
    return color;
  }

 private:
  std::array<QColor, 3> surfaces_;
};

/// Text of a paused row stands on a badge in the same colour, and both are drawn thinner than they are.
QColor legibleWhenPaused(QColor color, const QColor& window, const QColor& end) {
  const auto isLegible = [&](const QColor& candidate) {
    const QColor badge = over(window, candidate, PanelColors::fillOpacity);
    const QColor text = over(window, candidate, PanelColors::pausedOpacity);
    const QColor surface = over(window, badge, PanelColors::pausedOpacity);
    return contrast::ratio(text.rgb(), surface.rgb()) >= PanelColors::textRatio;
  };
  constexpr double kStep = 0.03;
  constexpr int kMaxSteps = 100;
  for (int step = 0; step < kMaxSteps && !isLegible(color); ++step)
    color = over(color, end, kStep);
  return color.rgb();
}

} // namespace

PanelColors panelColors(const Appearance& appearance, const QPalette& palette) {
  const bool dark = wantsDark(appearance, palette);
  const Base& own = base(dark);
  const QColor end = dark ? Qt::white : Qt::black;
  PanelColors colors;
  colors.window = windowColor(palette, dark);
  const QColor text = palette.color(QPalette::Active, QPalette::WindowText).rgb();
  colors.primary = contrast::ratio(text, colors.window) >= kWindowRatio ? text : own.primary;
  const auto tint = [&](double opacity) { return QColor(over(colors.window, end, opacity).rgb()); };
  colors.fill = tint(0.05);
  colors.control = tint(dark ? 0.11 : 0.07);
  colors.separator = tint(0.12);
  colors.groove = tint(dark ? 0.20 : 0.15);
  colors.menu = dark ? tint(0.07) : QColor(over(colors.window, Qt::white, 0.6).rgb());
  colors.handle = dark ? QColor(over(colors.window, Qt::white, 0.84).rgb()) : QColor(Qt::white);

  const Backgrounds backgrounds(colors.window, colors.fill, colors.control);
  const QColor stepsBack = over(colors.window, colors.primary, dark ? 0.62 : 0.64);
  colors.secondary =
      legibleWhenPaused(backgrounds.legibleOnAll(stepsBack, PanelColors::textRatio), colors.window, end);
  const double pausedSymbolRatio = PanelColors::symbolRatio / PanelColors::pausedOpacity + 0.2;
  colors.tertiary = backgrounds.legibleOnAll(over(colors.window, colors.primary, 0.45), pausedSymbolRatio);

  const QColor accent = accentColor(appearance, palette, dark);
  colors.accent = backgrounds.legibleOnAll(accent, PanelColors::textRatio);
  colors.onAccent = Qt::white;
  colors.prominent = legible(accent, Qt::white, PanelColors::textRatio);
  const auto textColor = [&](const QColor& color) {
    return legibleWhenPaused(backgrounds.legibleOnAll(color, PanelColors::textRatio), colors.window, end);
  };
  colors.orange = textColor(own.orange);
  colors.red = textColor(own.red);
  colors.green = own.green;
  colors.yellow = own.yellow;
  return colors;
}

} // namespace sonvel
