#include "ui/colors/panel_colors.h"

#include "ui/colors/contrast.h"

#include <algorithm>

namespace sonvel {
namespace {

using contrast::over;
using contrast::ratio;
using contrast::towards;

// The opacities that the views use.
constexpr double kPausedRowOpacity = 0.9;
constexpr double kBadgeOpacity = 0.15; ///< of the badge's own text colour

/// Small letters are blurred: measured on pictures, their strongest point has a quarter less contrast than
/// their colour.
constexpr double kBlur = 1.3;

/// On a window colour with less contrast to black and white there is no room for secondary text.
constexpr double kWindowRatio = 12.0;
constexpr double kPrimaryRatio = 10.0;

/// A highlight with less saturation (of 255) counts as grey, not as the user's colour.
constexpr int kColourful = 64;

struct Base {
  QColor window;
  QColor primary;
  QColor blue;
  QColor orange;
  QColor red;
  QColor green;
  QColor yellow;
};

constexpr Base kDark{.window = QColor(0x1f, 0x20, 0x23),
                     .primary = QColor(0xf2, 0xf2, 0xf4),
                     .blue = QColor(0x2f, 0x8c, 0xff),
                     .orange = QColor(0xff, 0x9f, 0x0a),
                     .red = QColor(0xff, 0x69, 0x61),
                     .green = QColor(0x30, 0xd1, 0x58),
                     .yellow = QColor(0xff, 0xd6, 0x0a)};
constexpr Base kLight{.window = QColor(0xf6, 0xf6, 0xf7),
                      .primary = QColor(0x1d, 0x1d, 0x1f),
                      .blue = QColor(0x0a, 0x6c, 0xff),
                      .orange = QColor(0xe8, 0x7a, 0x00),
                      .red = QColor(0xe0, 0x30, 0x2a),
                      .green = QColor(0x28, 0xb8, 0x4c),
                      .yellow = QColor(0xf2, 0xb6, 0x00)};

bool isDark(const QColor& color) {
  return ratio(Qt::white, color) > ratio(Qt::black, color);
}

bool wantsDark(const Appearance& appearance, const QColor& window) {
  if (appearance.colorScheme == Appearance::ColorScheme::noPreference) return isDark(window);
  return appearance.colorScheme == Appearance::ColorScheme::dark;
}

QColor accentColor(const Appearance& appearance, const QColor& highlight, const QColor& otherwise) {
  if (appearance.accentColor) return QColor::fromRgb(*appearance.accentColor);
  return highlight.hsvSaturation() >= kColourful ? highlight : otherwise;
}

/// Contrasts on the panel's backgrounds.
struct Reading {
  QColor window;
  QColor fill;

  double worst(const QColor& color) const { return std::min(ratio(color, window), ratio(color, fill)); }

  /// In a paused row, which is drawn with less opacity.
  double paused(const QColor& color) const { return ratio(over(window, color, kPausedRowOpacity), window); }

  /// In a paused row, on a badge of the same hue.
  double badge(const QColor& color) const {
    const QColor badge = over(window, color, kBadgeOpacity);
    return ratio(over(window, color, kPausedRowOpacity), over(window, badge, kPausedRowOpacity));
  }
};

} // namespace

PanelColors panelColors(const Appearance& appearance, const QPalette& palette) {
  const auto desktop = [&](QPalette::ColorRole role) {
    return QColor(palette.color(QPalette::Active, role).rgb());
  };
  const bool dark = wantsDark(appearance, desktop(QPalette::Window));
  const bool high = appearance.prefersHighContrast;
  const Base& own = dark ? kDark : kLight;
  const QColor end = dark ? Qt::white : Qt::black;
  const double textRatio = (high ? PanelColors::highTextRatio : PanelColors::textRatio) * kBlur;
  const double symbolRatio = high ? PanelColors::textRatio : PanelColors::symbolRatio;

  PanelColors colors;
  if (high)
    colors.window = dark ? Qt::black : Qt::white;
  else
    colors.window =
        ratio(end, desktop(QPalette::Window)) >= kWindowRatio ? desktop(QPalette::Window) : own.window;
  if (high)
    colors.primary = end;
  else
    colors.primary = ratio(desktop(QPalette::WindowText), colors.window) >= kPrimaryRatio
                         ? desktop(QPalette::WindowText)
                         : own.primary;
  const auto shade = [&](double opacity) { return over(colors.window, end, opacity); };
  colors.fill = shade(0.05);
  colors.control = shade(dark ? 0.11 : 0.07);
  colors.separator = high ? end : shade(dark ? 0.14 : 0.11);
  colors.groove = shade(dark ? 0.20 : 0.15);
  colors.menu = dark ? shade(0.06) : over(colors.window, Qt::white, 0.6);
  colors.handle = dark ? shade(0.84) : QColor(Qt::white);

  const Reading reading{colors.window, colors.fill};
  const auto readAsText = [&](const QColor& color) {
    return std::min(reading.worst(color), reading.paused(color)) >= textRatio;
  };
  const auto seenOnWindow = [&](const QColor& color) { return reading.paused(color) >= symbolRatio; };
  colors.secondary = towards(shade(0.55), end, [&](const QColor& color) {
    return readAsText(color) && reading.badge(color) >= textRatio;
  });
  colors.tertiary = towards(shade(0.35), end, seenOnWindow);
  colors.disabled = towards(shade(0.35), end,
                            [&](const QColor& color) { return ratio(color, colors.window) >= textRatio; });
  colors.orange = towards(own.orange, end, readAsText);
  colors.red = towards(own.red, end, readAsText);
  colors.green = own.green;
  colors.yellow = own.yellow;

  const QColor accent = accentColor(appearance, desktop(QPalette::Highlight), own.blue);
  colors.accent = towards(accent, end, readAsText);
  colors.tint = towards(accent, end, seenOnWindow);
  colors.onAccent = Qt::white;
  colors.prominent = towards(accent, Qt::black,
                             [&](const QColor& color) { return ratio(color, colors.onAccent) >= textRatio; });
  return colors;
}

} // namespace sonvel
