#include "engine/render_callback.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <thread>
#include <vector>

namespace sonvel {
namespace {

constexpr float kUntouched = -77.0F;
constexpr auto kNoData = std::nullopt;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

using Sizes = std::vector<std::optional<std::uint32_t>>; ///< in bytes; none: a buffer without data

/// One direction of a cycle: memory for each buffer, and the buffer list.
class Buffers {
 public:
  /// Filled by `sample(buffer, position)`.
  template <typename Sample>
  Buffers(const Sizes& sizes, Sample sample)
      : memory_(sizes.size()) {
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      const std::uint32_t sizeBytes = sizes[i].value_or(64);
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

/// A different value at every position, with alternating signs; the last in a buffer is the largest.
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

TEST_F(RenderBlock, PlaysWhatHasAPartnerAndLeavesTheRest) {
  const struct {
    Sizes in, out;
    std::vector<std::size_t> playedFloats; ///< of each output buffer
  } kShapes[] = {{{4096}, {2048}, {512}},
                 {{4096}, {8192}, {1024}},
                 {{4096}, {4096, 2048}, {1024, 0}},
                 {{}, {64}, {0}},
                 {{kNoData}, {64}, {0}},
                 {{64, kNoData, 64}, {64, 64, 64}, {16, 0, 16}},
                 {{64, 64}, {kNoData, 64}, {0, 16}},
                 {{3}, {64}, {0}},
                 {{64}, {7}, {1}}};

  mix->setGain(0.5F);
  std::int32_t cycles = 0;
  for (const auto& [in, out, playedFloats] : kShapes) {
    SCOPED_TRACE(cycles);
    Buffers input{in, rising};
    Buffers output{out, untouched};
    runCycle(input, output);
    float peak = 0.0F;
    for (std::size_t i = 0; i < out.size(); ++i) {
      EXPECT_EQ(output.list().buffers[i].writtenBytes, playedFloats[i] * sizeof(float));
      for (std::size_t k = 0; k < output.samples(i).size(); ++k) {
        const bool isPlayed = k < playedFloats[i];
        ASSERT_EQ(isPlayed ? 0.5F * rising(i, k) : kUntouched, output.samples(i)[k]) << i << ", " << k;
        if (isPlayed) peak = std::max(peak, std::abs(rising(i, k)));
      }
    }
    EXPECT_EQ(peak, metrics->inPeak()) << "of this cycle alone";
    EXPECT_EQ(in.size(), static_cast<std::size_t>(metrics->inBufs()));
    EXPECT_EQ(out.size(), static_cast<std::size_t>(metrics->outBufs()));
    EXPECT_EQ(++cycles, metrics->cycles());
  }
}

TEST_F(RenderBlock, PlaysTimesTheGainAndMeasuresBeforeIt) {
  const struct {
    float gain;
    bool isMuted;
    float sample, played, peak;
  } kLevels[] = {{2.0F, true, -1.0F, 0.0F, 1.0F},
                 {0.0F, false, 0.5F, 0.0F, 0.5F},
                 {2.0F, false, 0.8F, 1.6F, 0.8F}, // not limited
                 {0.5F, false, kNaN, kNaN, 0.0F},
                 {0.5F, false, -kInfinity, -kInfinity, kInfinity}};

  for (const auto& [gain, isMuted, sample, played, peak] : kLevels) {
    Buffers input{{256}, [value = sample](std::size_t, std::size_t) { return value; }};
    Buffers output{{256}, untouched};
    mix->setGain(gain);
    mix->setMuted(isMuted);
    runCycle(input, output);
    EXPECT_THAT(output.samples(0), testing::Each(testing::NanSensitiveFloatEq(played)));
    EXPECT_EQ(peak, metrics->inPeak());
  }
}

TEST_F(RenderBlock, GoesOnCountingAfterTheLargestNumberAndKeepsItsRecordsAlive) {
  metrics = std::make_shared<MixMetrics>(std::numeric_limits<std::int32_t>::max());
  block = makeRenderBlock(mix, metrics);
  const std::weak_ptr<const RealtimeMixBox> watchedMix = mix;
  const std::weak_ptr<const MixMetrics> watchedMetrics = metrics;
  mix.reset();
  metrics.reset();
  Buffers none{{}, untouched};
  runCycle(none, none);
  ASSERT_FALSE(watchedMix.expired());
  EXPECT_EQ(std::numeric_limits<std::int32_t>::min(), watchedMetrics.lock()->cycles());
  block = nullptr;
  EXPECT_TRUE(watchedMix.expired() && watchedMetrics.expired());
}

TEST_F(RenderBlock, UsesTheGainOfItsStartForAllItsBuffers) {
  const std::jthread turner([this](const std::stop_token& stop) {
    for (float gain = 1.0F; !stop.stop_requested(); gain = 3.0F - gain)
      mix->setGain(gain);
  });
  const auto ones = [](std::size_t, std::size_t) { return 1.0F; };
  Buffers input{{8192, 8192}, ones};
  Buffers output{{8192, 8192}, untouched};
  for (int cycle = 0; cycle < 5000; ++cycle) {
    runCycle(input, output);
    ASSERT_EQ(output.samples(0), output.samples(1));
  }
}

} // namespace
} // namespace sonvel
