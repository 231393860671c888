#pragma once

#include <cstdint>

/// Conversions between a linear gain factor, a whole percentage and a meter position. Pure, and defined for
/// every argument, including NaN. Any thread; real-time safe.
namespace sonvel::MixerMath {

/// Gains range from 0.0 to this; 1.0 is unity.
inline constexpr float maxGain = 2.0F;

/// Default bottom of a meter.
inline constexpr float defaultFloorDB = -60.0F;

/// Clamps to 0.0 to maxGain. NaN gives 0.0.
float clampGain(float gain) noexcept;

/// The result is clamped as a gain.
float percentToGain(std::int64_t percent) noexcept;

/// 0 to 200; halves are rounded away from zero; NaN gives 0.
std::int64_t gainToPercent(float gain) noexcept;

/// Whether a percentage amplifies.
bool isBoost(std::int64_t percent) noexcept;

/// 20 log10 of the amplitude. -120.0 for silence, negative values and NaN.
float decibels(float amplitude) noexcept;

/// Clamps to 0.0 to 1.0; NaN gives 0.0.
float clampUnity(float value) noexcept;

/// Meter position, linear in decibels: 0.0 at `floorDB` and below, 1.0 at full scale and above. `peak` is a
/// linear amplitude.
float meterLevel(float peak, float floorDB = defaultFloorDB) noexcept;

} // namespace sonvel::MixerMath
