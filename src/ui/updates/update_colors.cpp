#include "ui/updates/update_colors.h"

#include <algorithm>
#include <cmath>

namespace sonvel {
namespace {

constexpr double kTextRatio = 4.5;

double linear(float channel) {
  const double value = channel;
  return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

bool wantsDark(const Appearance& appearance, const QPalette& palette) {
  if (appearance.colorScheme != Appearance::ColorScheme::noPreference)
    return appearance.colorScheme == Appearance::ColorScheme::dark;
  const QColor window = palette.color(QPalette::Active, QPalette::Window);
  return contrastRatio(window, Qt::white) > contrastRatio(window, Qt::black);
}

/// The text that is easier to read on `surface`.
QColor textOn(const QColor& surface) {
  return contrastRatio(surface, Qt::white) >= kTextRatio ? QColor(Qt::white) : QColor(Qt::black);
}

} // namespace

double contrastRatio(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

UpdateColors updateColors(const Appearance& appearance, const QPalette& palette) {
  const bool isDark = wantsDark(appearance, palette);
  UpdateColors colors = isDark ? UpdateColors{.window = 0x1f2023,
                                              .well = 0x17181a,
                                              .primary = 0xf2f2f4,
                                              .secondary = 0xa9abb2,
                                              .separator = 0x3a3b40,
                                              .control = 0x35363b,
                                              .accent = 0x2a70cf,
                                              .groove = 0x3d3e44,
                                              .good = 0x30b158,
                                              .bad = 0xe8624f}
                               : UpdateColors{.window = 0xf6f6f7,
                                              .well = 0xffffff,
                                              .primary = 0x1d1d1f,
                                              .secondary = 0x5f6066,
                                              .separator = 0xd9d9dd,
                                              .control = 0xffffff,
                                              .accent = 0x0a66d8,
                                              .groove = 0xdcdce0,
                                              .good = 0x1f8f45,
                                              .bad = 0xc93a2b};
  if (appearance.accentColor) colors.accent = QColor::fromRgb(*appearance.accentColor);
  colors.onAccent = textOn(colors.accent);
  return colors;
}

} // namespace sonvel
