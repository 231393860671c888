#include "audio/mixer_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sonvel {

constexpr auto kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr auto kInfinity = std::numeric_limits<float>::infinity();

TEST(MixerMath, KeepsGainsInRangeAndEveryPercentThroughTheRoundTrip) {
  const struct {
    float value, gain, unity;
  } cases[] = {
      {kNaN, 0.0F, 0.0F}, {-kInfinity, 0.0F, 0.0F}, {-0.0F, 0.0F, 0.0F},
      {1.0F, 1.0F, 1.0F}, {1.5F, 1.5F, 1.0F},       {kInfinity, 2.0F, 1.0F},
  };

  for (const auto& [value, gain, unity] : cases) {
    EXPECT_EQ(MixerMath::clampGain(value), gain) << value;
    EXPECT_EQ(MixerMath::clampUnity(value), unity) << value;
    EXPECT_FALSE(std::signbit(MixerMath::clampGain(value))) << value;
  }
  for (std::int64_t percent = -10; percent <= 210; ++percent) {
    const auto expected = std::clamp<std::int64_t>(percent, 0, 200);
    EXPECT_EQ(MixerMath::gainToPercent(MixerMath::percentToGain(percent)), expected);
    EXPECT_EQ(MixerMath::isBoost(percent), percent > 100);
  }
  EXPECT_EQ(MixerMath::percentToGain(50), 0.5F);
  EXPECT_EQ(MixerMath::gainToPercent(0.995F), 100);
}

TEST(MixerMath, ConvertsToMeterLevels) {
  const struct {
    float peak, floorDB, level;
  } cases[] = {
      {1.0F, -60.0F, 1.0F},      {0.1F, -60.0F, 2.0F / 3.0F}, {0.0001F, -60.0F, 0.0F},  {10.0F, -60.0F, 1.0F},
      {kInfinity, -60.0F, 1.0F}, {-1.0F, -60.0F, 0.0F},       {kNaN, -60.0F, 0.0F},     {0.0F, -150.0F, 0.2F},
      {0.5F, 0.0F, 0.0F},        {0.5F, kNaN, 0.0F},          {0.5F, -kInfinity, 0.0F},
  };

  for (const auto& [peak, floorDB, level] : cases)
    EXPECT_NEAR(MixerMath::meterLevel(peak, floorDB), level, 1e-5) << peak << " above " << floorDB;
}

} // namespace sonvel
