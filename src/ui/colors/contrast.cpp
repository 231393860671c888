#include "ui/colors/contrast.h"

#include <algorithm>
#include <cmath>

namespace sonvel::contrast {
namespace {

/// The number of steps from one colour to another.
constexpr int kSteps = 100;

double linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

int mix(int from, int to, double share) {
  return static_cast<int>(std::lround(std::lerp(from, to, share)));
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
  return {mix(background.red(), color.red(), opacity), mix(background.green(), color.green(), opacity),
          mix(background.blue(), color.blue(), opacity)};
}

QColor towards(const QColor& color, const QColor& end, const std::function<bool(const QColor&)>& isLegible) {
  for (int step = 0; step < kSteps; ++step)
    if (QColor candidate = over(color, end, 1.0 * step / kSteps); isLegible(candidate)) return candidate;
  return end;
}

} // namespace sonvel::contrast
