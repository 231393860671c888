#include "engine/render_callback.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <optional>
#include <ostream>
#include <thread>
#include <vector>

namespace sonvel {
namespace {

using testing::Each;

constexpr float kUntouched = -77.0F;
constexpr auto kNoData = std::nullopt;

/// One direction of a cycle: memory for each buffer, and the list that shows it.
class Buffers {
 public:
  /// A buffer for each size in bytes, filled by `sample(buffer, position)`; one without a size has no data.
  template <typename Sample>
  Buffers(const std::vector<std::optional<std::uint32_t>>& sizes, Sample sample)
      : memory_(sizes.size()) {
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      constexpr std::uint32_t kSizeWithoutData = 64;
      const std::uint32_t sizeBytes = sizes[i].value_or(kSizeWithoutData);
      for (std::size_t k = 0; k * sizeof(float) < sizeBytes; ++k)
        memory_[i].push_back(sample(i, k));
      list_.push_back(
          {.channelCount = 2, .sizeBytes = sizeBytes, .data = sizes[i] ? memory_[i].data() : nullptr});
    }
  }

  AudioBufferList list() { return {.buffers = list_}; }

  const std::vector<float>& samples(std::size_t buffer) const { return memory_.at(buffer); }

 private:
  std::vector<std::vector<float>> memory_;
  std::vector<AudioBuffer> list_;
};

float untouched(std::size_t /*buffer*/, std::size_t /*position*/) {
  return kUntouched;
}

/// Another value at every place, its sign alternating and the last of a buffer the largest.
float rising(std::size_t buffer, std::size_t position) {
  const auto size = static_cast<float>(position + 1) / 1024.0F + static_cast<float>(buffer) * 0.0001F;
  return position % 2 == 0 ? size : -size;
}

struct RenderBlock : testing::Test {
  void runCycle(Buffers& input, Buffers& output) const {
    const AudioBufferList in = input.list();
    AudioBufferList out = output.list();
    block({}, in, {}, out, {});
  }

  std::shared_ptr<RealtimeMixBox> mix = std::make_shared<RealtimeMixBox>();
  std::shared_ptr<MixMetrics> metrics = std::make_shared<MixMetrics>();
  IOProcBlock block = makeRenderBlock(mix, metrics);
};

struct Shape {
  std::string name;
  std::vector<std::optional<std::uint32_t>> inBytes;
  std::vector<std::optional<std::uint32_t>> outBytes;
  std::vector<std::size_t> playedFloats; ///< of each output buffer

  friend std::ostream& operator<<(std::ostream& out, const Shape& shape) { return out << shape.name; }
};

struct RenderBlockShapes : RenderBlock, testing::WithParamInterface<Shape> {};

TEST_P(RenderBlockShapes, PlaysWhatHasAPartnerAndLeavesTheRest) {
  const auto& [name, inBytes, outBytes, playedFloats] = GetParam();
  Buffers input{inBytes, rising};
  Buffers output{outBytes, untouched};
  mix->setGain(0.5F);
  runCycle(input, output);

  float peak = 0.0F;
  for (std::size_t i = 0; i < outBytes.size(); ++i) {
    const std::vector<float>& out = output.samples(i);
    for (std::size_t k = 0; k < out.size(); ++k) {
      const bool played = k < playedFloats[i];
      ASSERT_EQ(played ? 0.5F * rising(i, k) : kUntouched, out[k]) << "buffer " << i << ", float " << k;
      if (played) peak = std::max(peak, std::abs(rising(i, k)));
    }
  }
  EXPECT_EQ(peak, metrics->inPeak());
  EXPECT_EQ(inBytes.size(), static_cast<std::size_t>(metrics->inBufs()));
  EXPECT_EQ(outBytes.size(), static_cast<std::size_t>(metrics->outBufs()));
  EXPECT_EQ(1, metrics->cycles());
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, RenderBlockShapes,
    testing::Values(Shape{"SameSize", {4096}, {4096}, {1024}}, Shape{"SmallerOutput", {4096}, {2048}, {512}},
                    Shape{"LargerOutput", {4096}, {8192}, {1024}},
                    Shape{"MoreInputs", {4096, 2048}, {4096}, {1024}},
                    Shape{"MoreOutputs", {4096}, {4096, 2048}, {1024, 0}},
                    Shape{"TwoPairs", {64, 256}, {256, 128}, {16, 32}}, Shape{"NoBuffers", {}, {}, {}},
                    Shape{"NoInputs", {}, {64}, {0}}, Shape{"InputWithoutData", {kNoData}, {64}, {0}},
                    Shape{"OutputWithoutData", {64}, {kNoData}, {0}},
                    Shape{"OneOfThreeWithoutData", {64, kNoData, 64}, {64, 64, 64}, {16, 0, 16}},
                    Shape{"OutputWithoutDataBeforeAnother", {64, 64}, {kNoData, 64}, {0, 16}},
                    Shape{"Empty", {0}, {0}, {0}}, Shape{"LessThanAFloat", {3}, {64}, {0}},
                    Shape{"LessThanAFloatOut", {64}, {3}, {0}}, Shape{"OneFloatAndAPart", {7}, {64}, {1}},
                    Shape{"OneFloatAndAPartOut", {64}, {7}, {1}}),
    [](const auto& instance) { return instance.param.name; });

struct Level {
  std::string name;
  float gain;
  bool muted;
  float sample;
  float played;
  float peak;

  friend std::ostream& operator<<(std::ostream& out, const Level& level) { return out << level.name; }
};

struct RenderBlockLevels : RenderBlock, testing::WithParamInterface<Level> {};

TEST_P(RenderBlockLevels, PlaysTimesTheGainAndMeasuresBeforeIt) {
  const auto& [name, gain, muted, sample, played, peak] = GetParam();
  Buffers input{{256}, [value = sample](std::size_t, std::size_t) { return value; }};
  Buffers output{{256}, untouched};
  mix->setGain(gain);
  mix->setMuted(muted);
  runCycle(input, output);
  EXPECT_THAT(output.samples(0), Each(testing::NanSensitiveFloatEq(played)));
  EXPECT_EQ(peak, metrics->inPeak());
}

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

INSTANTIATE_TEST_SUITE_P(Levels, RenderBlockLevels,
                         testing::Values(Level{"Muted", 1.0F, true, 1.0F, 0.0F, 1.0F},
                                         Level{"MutedAtABoost", 2.0F, true, -1.0F, 0.0F, 1.0F},
                                         Level{"GainZero", 0.0F, false, 0.5F, 0.0F, 0.5F},
                                         Level{"BoostIsNotLimited", 2.0F, false, 0.8F, 1.6F, 0.8F},
                                         Level{"NegativeCountsAbsolute", 1.0F, false, -0.3F, -0.3F, 0.3F},
                                         Level{"NaNPlaysButIsNoPeak", 0.5F, false, kNaN, kNaN, 0.0F},
                                         Level{"Infinity", 0.5F, false, -kInfinity, -kInfinity, kInfinity}),
                         [](const auto& instance) { return instance.param.name; });

TEST_F(RenderBlock, MeasuresEachCycleAnew) {
  Buffers loud{{64}, [](std::size_t, std::size_t) { return 0.9F; }};
  Buffers quiet{{64}, [](std::size_t, std::size_t) { return 0.1F; }};
  Buffers none{{}, untouched};
  Buffers output{{64}, untouched};
  runCycle(loud, output);
  EXPECT_EQ(0.9F, metrics->inPeak());
  runCycle(quiet, output);
  EXPECT_EQ(0.1F, metrics->inPeak());
  runCycle(none, output);
  EXPECT_EQ(0.0F, metrics->inPeak());
  EXPECT_EQ(3, metrics->cycles());
}

TEST_F(RenderBlock, GoesOnCountingAfterTheLargestNumber) {
  metrics = std::make_shared<MixMetrics>(std::numeric_limits<std::int32_t>::max());
  block = makeRenderBlock(mix, metrics);
  Buffers none{{}, untouched};
  runCycle(none, none);
  EXPECT_EQ(std::numeric_limits<std::int32_t>::min(), metrics->cycles());
}

TEST_F(RenderBlock, KeepsItsRecordsAliveAndSharesThemWithItsCopies) {
  const std::weak_ptr<const RealtimeMixBox> watchedMix = mix;
  const std::weak_ptr<const MixMetrics> watchedMetrics = metrics;
  IOProcBlock copy = block;
  mix.reset();
  metrics.reset();
  Buffers none{{}, untouched};
  runCycle(none, none);
  block = nullptr;
  ASSERT_FALSE(watchedMix.expired());
  EXPECT_EQ(1, watchedMetrics.lock()->cycles());
  copy = nullptr;
  EXPECT_TRUE(watchedMix.expired());
  EXPECT_TRUE(watchedMetrics.expired());
}

TEST(RealtimeMixBox, ReturnsToItsGainAfterMute) {
  RealtimeMixBox mix;
  EXPECT_EQ(1.0F, mix.effectiveGain());
  mix.setGain(1.5F);
  mix.setMuted(true);
  EXPECT_EQ(0.0F, mix.effectiveGain());
  EXPECT_EQ(1.5F, mix.gain());
  mix.setMuted(false);
  EXPECT_EQ(1.5F, mix.effectiveGain());
}

// One factor holds for the whole of a cycle, however the other thread turns it meanwhile, and the other
// thread never sees a count go back or a peak that no cycle had.
TEST_F(RenderBlock, PlaysWholeCyclesWhileAnotherThreadTurnsTheGain) {
  constexpr std::int32_t kCycles = 20'000;
  std::atomic<bool> hasStarted = false;
  std::atomic<bool> isDone = false;
  int wrongReads = 0;
  std::thread actor{[&] {
    std::int32_t lastCycles = 0;
    hasStarted = true;
    for (unsigned turn = 0; !isDone; ++turn) {
      mix->setGain(turn % 2 == 0 ? 0.5F : 2.0F);
      mix->setMuted(turn % 5 == 0);
      const std::int32_t cycles = metrics->cycles();
      const float peak = metrics->inPeak();
      if (cycles < lastCycles || (peak != 0.0F && peak != 1.0F)) ++wrongReads;
      lastCycles = cycles;
    }
  }};
  while (!hasStarted)
    std::this_thread::yield();

  Buffers input{{512, 512, 512}, [](std::size_t, std::size_t) { return 1.0F; }};
  Buffers output{{512, 512, 512}, untouched};
  int wrongCycles = 0;
  for (std::int32_t cycle = 0; cycle < kCycles; ++cycle) {
    runCycle(input, output);
    const float factor = output.samples(0)[0];
    const bool isFactor = factor == 0.0F || factor == 0.5F || factor == 1.0F || factor == 2.0F;
    for (std::size_t i = 0; i < 3; ++i)
      if (!isFactor || output.samples(i) != std::vector<float>(128, factor)) ++wrongCycles;
  }
  isDone = true;
  actor.join();
  EXPECT_EQ(0, wrongCycles);
  EXPECT_EQ(0, wrongReads);
  EXPECT_EQ(kCycles, metrics->cycles());
}

} // namespace
} // namespace sonvel
