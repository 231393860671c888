#include "session/analysis.h"
#include "session/signal_source.h"

#include <gmock/gmock.h>

namespace sonvel::session {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<float> tone(int frequency, float amplitude, std::size_t frames) {
  SignalSource source;
  source.frequency = frequency;
  source.amplitude = amplitude;
  std::vector<float> samples(frames);
  for (float& sample : samples)
    sample = source.next(0);
  return samples;
}

TEST(ToneAmplitude, IsExactBesideOtherTonesAndAtAnyPhase) {
  constexpr std::size_t kFrames = 16384;
  const std::vector<float> quiet = tone(997, 0.001F, kFrames + 100);
  const std::vector<float> loud = tone(1021, 0.5F, kFrames + 100);
  const std::vector<float> high = tone(15000, 0.4F, kFrames + 100);
  std::vector<float> mixed(kFrames + 100);
  for (std::size_t i = 0; i < mixed.size(); ++i)
    mixed[i] = quiet[i] + loud[i] + high[i];

  for (const std::size_t start : {0U, 13U, 100U}) {
    const std::span<const float> heard = std::span(mixed).subspan(start, kFrames);
    EXPECT_NEAR(decibels(toneAmplitude(heard, 1021) / 0.5), 0.0, 0.0005);
    EXPECT_NEAR(decibels(toneAmplitude(heard, 15000) / 0.4), 0.0, 0.0005);
    EXPECT_NEAR(decibels(toneAmplitude(heard, 997) / 0.001), 0.0, 0.2);
    EXPECT_LT(toneAmplitude(heard, 3000), 0.00001);
  }
  EXPECT_EQ(toneAmplitude({}, 1000), 0.0);
}

TEST(TrailingZeros, CountsExactZerosAlone) {
  EXPECT_EQ(trailingZeros(std::vector{0.0F, 1.0F, 0.0F, -0.0F}), 2U);
  EXPECT_EQ(trailingZeros(std::vector{0.0F, 1e-40F}), 0U);
  EXPECT_EQ(trailingZeros({}), 0U);
}

TEST(ImpulsePositions, FindsBothSigns) {
  EXPECT_THAT(impulsePositions(std::vector{0.0F, 0.6F, 0.4F, -0.6F}, 0.5F), ElementsAre(1, 3));
}

class CounterFaults : public testing::Test {
 protected:
  // Over the wrap of the counter, and starting and ending in silence.
  CounterFaults() {
    SignalSource source;
    source.kind = SignalSource::Kind::counter;
    source.amplitude = kScale;
    for (float& sample : samples_)
      sample = source.next(0);
    samples_.insert(samples_.begin(), 10, 0.0F);
    samples_.insert(samples_.end(), 10, 0.0F);
  }

  static constexpr float kScale = 0.3F;
  std::vector<float> samples_ = std::vector<float>(40000);
};

TEST_F(CounterFaults, AreNoneInAnUnbrokenRun) {
  EXPECT_THAT(counterFaults(samples_, kScale), IsEmpty());
}

TEST_F(CounterFaults, AreLostRepeatedAndSilentSamples) {
  const auto at = [this](std::ptrdiff_t index) { return samples_.begin() + index; };
  samples_.erase(at(30000), at(31024));
  const std::vector<float> again(at(20000), at(20003));
  samples_.insert(at(20003), again.begin(), again.end());
  samples_.insert(at(10000), 256, 0.0F);
  std::fill(at(500), at(600), 0.0F);

  EXPECT_THAT(counterFaults(samples_, kScale),
              ElementsAre(CounterFault{.index = 600, .lost = 100, .silent = 100},
                          CounterFault{.index = 10256, .lost = 0, .silent = 256},
                          CounterFault{.index = 20259, .lost = -3, .silent = 0},
                          CounterFault{.index = 30259, .lost = 1024, .silent = 0}));
}

} // namespace
} // namespace sonvel::session
