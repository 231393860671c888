#include "engine/render_callback.h"
#include "engine/render_reference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <random>
#include <vector>

namespace sonvel {
namespace {

using Limits = std::numeric_limits<float>;

constexpr float kSentinel = 12345.0F;
constexpr std::size_t kGuardFloats = 16;
const float kOddNaN = std::bit_cast<float>(0xffc12345U);

const std::array kSpecialSamples{0.0F,
                                 -0.0F,
                                 Limits::infinity(),
                                 -Limits::infinity(),
                                 Limits::quiet_NaN(),
                                 kOddNaN,
                                 std::bit_cast<float>(0x7f812345U), // a signalling NaN
                                 Limits::denorm_min(),
                                 -Limits::min() / 2.0F,
                                 Limits::lowest()};
const std::array kGains{0.5F, 0.0F, -0.0F, 1.0F, 2.0F, 0.7F, Limits::denorm_min(), Limits::infinity()};

std::vector<RenderCycle> kernelsOfThisProcessor() {
  std::vector<RenderCycle> kernels{&renderCycle};
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2")) kernels.push_back(&renderCycleAvx2);
#endif
  return kernels;
}

/// Quiet and loud samples, with one special value in `specialEvery`; 0: none.
std::vector<float> makeSamples(std::size_t count, std::uint32_t specialEvery, std::mt19937& random) {
  std::uniform_real_distribution<float> loud{-1.5F, 1.5F};
  std::vector<float> samples(count);
  for (float& sample : samples) {
    sample = loud(random);
    if (random() % 4 == 0) sample *= 1e-3F;
    if (specialEvery != 0 && random() % specialEvery == 0)
      sample = kSpecialSamples.at(random() % kSpecialSamples.size());
  }
  return samples;
}

bool haveSameBits(const std::vector<float>& left, const std::vector<float>& right) {
  return std::ranges::equal(left, right, {}, std::bit_cast<std::uint32_t, float>,
                            std::bit_cast<std::uint32_t, float>);
}

/// Renders one buffer; returns the peak.
float renderOne(RenderCycle kernel, float gain, float* in, float* out, std::size_t count) {
  RealtimeMixBox mix;
  mix.setGain(gain);
  MixMetrics metrics;
  const auto sizeBytes = static_cast<std::uint32_t>(count * sizeof(float));
  AudioBuffer from{.channelCount = 1, .sizeBytes = sizeBytes, .data = in};
  AudioBuffer to{.channelCount = 1, .sizeBytes = sizeBytes, .data = out};
  AudioBufferList output{{&to, 1}};
  kernel(mix, metrics, {{&from, 1}}, output);
  return metrics.inPeak();
}

/// Compares a kernel with the plain loop on `samples`, at the given distances in floats from an aligned
/// address, and in place. The input ends at the end of its memory; the output has guard values on both sides.
bool equalsPlainLoop(RenderCycle kernel, const std::vector<float>& samples, float gain, std::size_t inOffset,
                     std::size_t outOffset) {
  const std::size_t count = samples.size();
  std::vector<float> in(inOffset + count, kSentinel);
  std::ranges::copy(samples, in.begin() + static_cast<std::ptrdiff_t>(inOffset));
  std::vector<float> out(kGuardFloats + outOffset + count + kGuardFloats, kSentinel);
  std::vector<float> expected = out;
  const std::size_t at = kGuardFloats + outOffset;
  const float plainPeak = plainScaleAndPeak(gain, in.data() + inOffset, expected.data() + at, count, 0.0F);
  const float kernelPeak = renderOne(kernel, gain, in.data() + inOffset, out.data() + at, count);
  std::vector<float> inPlace = expected;
  std::ranges::copy(samples, inPlace.begin() + static_cast<std::ptrdiff_t>(at));
  const float inPlacePeak = renderOne(kernel, gain, inPlace.data() + at, inPlace.data() + at, count);
  return haveSameBits({kernelPeak, inPlacePeak}, {plainPeak, plainPeak}) && haveSameBits(out, expected) &&
         haveSameBits(inPlace, expected);
}

TEST(RenderKernels, EqualThePlainLoopAtEveryLengthAndAlignment) {
  std::mt19937 random{1};
  for (const auto kernel : kernelsOfThisProcessor())
    for (std::size_t count = 0; count <= 200; ++count)
      for (std::size_t offsets = 0; offsets < 64; ++offsets) {
        const float gain = kGains.at((count + offsets) % kGains.size());
        const auto samples = makeSamples(count, offsets % 3 == 0 ? 0 : 5, random);
        ASSERT_TRUE(equalsPlainLoop(kernel, samples, gain, offsets % 8, offsets / 8))
            << count << " samples, offsets " << offsets << ", gain " << gain;
      }
  EXPECT_EQ(kernelsOfThisProcessor().back(), fastestRenderCycle());
}

} // namespace
} // namespace sonvel
