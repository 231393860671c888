#include "audio/mixer_math.h"

#include <algorithm>
#include <cmath>

namespace sonvel::MixerMath {
namespace {

constexpr float kSilenceDB = -120.0F;

/// Clamps to 0.0 to `upper`. NaN fails the comparison and becomes 0.0.
float clampFromZero(float value, float upper) noexcept {
  return value > 0.0F ? std::min(value, upper) : 0.0F;
}

} // namespace

float clampGain(float gain) noexcept {
  return clampFromZero(gain, maxGain);
}

float percentToGain(std::int64_t percent) noexcept {
  return clampGain(static_cast<float>(percent) / 100.0F);
}

std::int64_t gainToPercent(float gain) noexcept {
  return std::llround(clampGain(gain) * 100.0F);
}

bool isBoost(std::int64_t percent) noexcept {
  return percent > 100;
}

float decibels(float amplitude) noexcept {
  return amplitude > 0.0F ? 20.0F * std::log10(amplitude) : kSilenceDB;
}

float clampUnity(float value) noexcept {
  return clampFromZero(value, 1.0F);
}

float meterLevel(float peak, float floorDB) noexcept {
  const float db = decibels(peak);
  if (db <= floorDB) return 0.0F;
  if (db >= 0.0F) return 1.0F;
  return clampUnity((db - floorDB) / (0.0F - floorDB));
}

} // namespace sonvel::MixerMath
