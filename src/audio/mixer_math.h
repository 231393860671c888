#pragma once

#include <cstdint>

/// Conversions between the ways in which a channel's level is expressed: a linear gain factor, a whole
/// percentage and a meter position. Pure, and defined for every argument, NaN too. Any thread; real-time
/// safe.
namespace sonvel::MixerMath {

/// The range of a gain is 0.0 to this; 1.0 is unity.
inline constexpr float maxGain = 2.0F;

/// The bottom of a meter unless another is asked for.
inline constexpr float defaultFloorDB = -60.0F;

/// NaN is 0.0.
float clampGain(float gain) noexcept;

/// The result is clamped as a gain.
float percentToGain(std::int64_t percent) noexcept;

/// 0 to 200; a half is rounded away from zero and NaN is 0.
std::int64_t gainToPercent(float gain) noexcept;

/// Whether a percentage amplifies.
bool isBoost(std::int64_t percent) noexcept;

/// -120.0 for silence, for what is below zero and for NaN.
float decibels(float amplitude) noexcept;

/// Cuts to 0.0 to 1.0; NaN is 0.0.
float clampUnity(float value) noexcept;

/// Where a meter stands that is linear in decibels: 0.0 at `floorDB` and below, 1.0 at full scale and above.
/// `peak` is a linear amplitude.
float meterLevel(float peak, float floorDB = defaultFloorDB) noexcept;

} // namespace sonvel::MixerMath
