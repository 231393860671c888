#include "ui/contrast.h"

#include <algorithm>
#include <cmath>

namespace sonvel::contrast {
namespace {

/// In so many steps a colour becomes black or white.
constexpr int kSteps = 64;

double linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

float mix(float from, float to, double share) {
  return static_cast<float>(std::lerp(double{from}, double{to}, share));
}

} // namespace

double luminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double ratio(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

QColor over(const QColor& background, const QColor& color, double opacity) {
  const QColor mixed = QColor::fromRgbF(mix(background.redF(), color.redF(), opacity),
                                        mix(background.greenF(), color.greenF(), opacity),
                                        mix(background.blueF(), color.blueF(), opacity));
  return mixed.toRgb();
}

QColor legible(const QColor& color, const QColor& background, double minimumRatio) {
  const QColor end = ratio(Qt::white, background) > ratio(Qt::black, background) ? Qt::white : Qt::black;
  for (int step = 0; step < kSteps; ++step) {
    // Rounded to what is drawn, so that rounding takes nothing from the ratio.
    const QColor candidate(over(color, end, double{1} * step / kSteps).rgb());
    if (ratio(candidate, background) >= minimumRatio) return candidate;
  }
  return end;
}

} // namespace sonvel::contrast
