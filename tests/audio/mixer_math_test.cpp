#include "audio/mixer_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sonvel {
namespace {

constexpr auto kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr auto kInfinity = std::numeric_limits<float>::infinity();

TEST(MixerMath, Clamps) {
  const struct {
    float value, gain, unity;
  } kCases[] = {
      {kNaN, 0.0F, 0.0F},    {-kInfinity, 0.0F, 0.0F}, {-0.5F, 0.0F, 0.0F}, {-0.0F, 0.0F, 0.0F},
      {0.0F, 0.0F, 0.0F},    {1.0F, 1.0F, 1.0F},       {1.5F, 1.5F, 1.0F},  {2.0F, 2.0F, 1.0F},
      {2.0001F, 2.0F, 1.0F}, {kInfinity, 2.0F, 1.0F},
  };

  for (const auto& [value, gain, unity] : kCases) {
    EXPECT_EQ(MixerMath::clampGain(value), gain) << value;
    EXPECT_EQ(MixerMath::clampUnity(value), unity) << value;
    EXPECT_FALSE(std::signbit(MixerMath::clampGain(value))) << value;
  }
}

TEST(MixerMath, ConvertsPercentToGain) {
  using Limits = std::numeric_limits<std::int64_t>;
  const std::pair<std::int64_t, float> kCases[] = {
      {Limits::min(), 0.0F}, {-5, 0.0F},  {0, 0.0F},   {50, 0.5F},
      {100, 1.0F},           {200, 2.0F}, {201, 2.0F}, {Limits::max(), 2.0F},
  };
  for (const auto& [percent, gain] : kCases)
    EXPECT_EQ(MixerMath::percentToGain(percent), gain) << percent;
}

TEST(MixerMath, ConvertsGainToPercent) {
  const std::pair<float, std::int64_t> kCases[] = {
      {kNaN, 0},    {-1.0F, 0},    {0.0F, 0},   {0.125F, 13},
      {0.994F, 99}, {0.995F, 100}, {5.0F, 200}, {kInfinity, 200},
  };
  for (const auto& [gain, percent] : kCases)
    EXPECT_EQ(MixerMath::gainToPercent(gain), percent) << gain;
}

TEST(MixerMath, EveryPercentSurvivesTheRoundTrip) {
  for (std::int64_t percent = -10; percent <= 210; ++percent) {
    const auto expected = std::clamp<std::int64_t>(percent, 0, 200);
    EXPECT_EQ(MixerMath::gainToPercent(MixerMath::percentToGain(percent)), expected);
    EXPECT_EQ(MixerMath::isBoost(percent), percent > 100);
  }
}

TEST(MixerMath, ConvertsToDecibelsAndMeterLevels) {
  const struct {
    float peak, floorDB, decibels, level;
  } kCases[] = {
      {1.0F, -60.0F, 0.0F, 1.0F},
      {0.1F, -60.0F, -20.0F, 2.0F / 3.0F},
      {std::pow(10.0F, -1.5F), -60.0F, -30.0F, 0.5F},
      {0.001F, -60.0F, -60.0F, 0.0F},
      {0.0001F, -60.0F, -80.0F, 0.0F},
      {10.0F, -60.0F, 20.0F, 1.0F},
      {kInfinity, -60.0F, kInfinity, 1.0F},
      {0.0F, -60.0F, -120.0F, 0.0F},
      {-1.0F, -60.0F, -120.0F, 0.0F},
      {kNaN, -60.0F, -120.0F, 0.0F},
      {0.0F, -150.0F, -120.0F, 0.2F},
      {0.5F, 0.0F, -6.0206F, 0.0F},
      {0.5F, kNaN, -6.0206F, 0.0F},
      {0.5F, -kInfinity, -6.0206F, 0.0F},
  };

  for (const auto& [peak, floorDB, decibels, level] : kCases) {
    if (std::isinf(decibels))
      EXPECT_EQ(MixerMath::decibels(peak), decibels);
    else
      EXPECT_NEAR(MixerMath::decibels(peak), decibels, 1e-4) << peak;
    EXPECT_NEAR(MixerMath::meterLevel(peak, floorDB), level, 1e-5) << peak << " above " << floorDB;
  }
  EXPECT_NEAR(MixerMath::meterLevel(0.1F), 2.0F / 3.0F, 1e-5) << "the floor is -60 dB unless told otherwise";
}

} // namespace
} // namespace sonvel
