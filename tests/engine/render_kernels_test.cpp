#include "engine/render_callback.h"
#include "engine/render_reference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <ostream>
#include <random>
#include <vector>

namespace sonvel {
namespace {

using Limits = std::numeric_limits<float>;

constexpr float kSentinel = 12345.0F;
constexpr std::size_t kGuardFloats = 16;
const float kOddNaN = std::bit_cast<float>(0xffc12345U);
const float kSignalingNaN = std::bit_cast<float>(0x7f812345U);

const std::array kSpecialSamples{0.0F,
                                 -0.0F,
                                 Limits::infinity(),
                                 -Limits::infinity(),
                                 Limits::quiet_NaN(),
                                 -Limits::quiet_NaN(),
                                 kOddNaN,
                                 kSignalingNaN,
                                 Limits::denorm_min(),
                                 -Limits::denorm_min(),
                                 Limits::min() / 2.0F,
                                 Limits::max(),
                                 Limits::lowest()};
const std::array kGains{0.5F, 0.0F, -0.0F, 1.0F, 2.0F, 0.7F, Limits::denorm_min(), Limits::infinity()};

struct Kernel {
  std::string name;
  ScaleAndPeak function;

  friend std::ostream& operator<<(std::ostream& out, const Kernel& kernel) { return out << kernel.name; }
};

std::vector<Kernel> kernelsOfThisProcessor() {
  std::vector<Kernel> kernels{{"everyProcessor", &scaleAndPeak}};
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2")) kernels.push_back({"avx2", &scaleAndPeakAvx2});
#endif
  return kernels;
}

/// Quiet and loud samples, one in `specialEvery` of them a special one; without specials if that is zero.
std::vector<float> makeSamples(std::size_t count, std::uint32_t specialEvery, std::uint32_t seed) {
  std::mt19937 random{seed};
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

bool sameBits(float left, float right) {
  return std::bit_cast<std::uint32_t>(left) == std::bit_cast<std::uint32_t>(right);
}

void expectSameBits(const std::vector<float>& actual, const std::vector<float>& expected) {
  for (std::size_t k = 0; k < expected.size(); ++k)
    ASSERT_TRUE(sameBits(actual[k], expected[k]))
        << "float " << k << ": " << actual[k] << ", not " << expected[k];
}

class RenderKernel : public testing::TestWithParam<Kernel> {
 protected:
  /// Runs the kernel and the plain loop on `samples`, from and to addresses so many floats behind an aligned
  /// one. The input ends where its memory ends, the output has guards on both sides.
  static void expectEqualToPlainLoop(const std::vector<float>& samples, float gain, float peak,
                                     std::size_t inOffset = 0, std::size_t outOffset = 0) {
    const std::size_t count = samples.size();
    std::vector<float> in(inOffset + count, kSentinel);
    std::copy(samples.begin(), samples.end(), in.begin() + static_cast<std::ptrdiff_t>(inOffset));
    std::vector<float> out(kGuardFloats + outOffset + count + kGuardFloats, kSentinel);
    std::vector<float> expected = out;
    const std::size_t at = kGuardFloats + outOffset;
    const float expectedPeak =
        plainScaleAndPeak(gain, in.data() + inOffset, expected.data() + at, count, peak);
    const float actualPeak = GetParam().function(gain, in.data() + inOffset, out.data() + at, count, peak);
    ASSERT_TRUE(sameBits(actualPeak, expectedPeak)) << actualPeak << " is not " << expectedPeak;
    expectSameBits(out, expected);

    std::vector<float> inPlace = expected;
    std::copy(samples.begin(), samples.end(), inPlace.begin() + static_cast<std::ptrdiff_t>(at));
    float* const both = inPlace.data() + at;
    ASSERT_TRUE(sameBits(GetParam().function(gain, both, both, count, peak), expectedPeak));
    expectSameBits(inPlace, expected);
  }
};

TEST_P(RenderKernel, EqualsThePlainLoopAtEveryLengthAndAlignment) {
  for (std::size_t count = 0; count <= 200; ++count) {
    const std::vector<float> samples = makeSamples(count, 5, static_cast<std::uint32_t>(count));
    for (std::size_t inOffset = 0; inOffset < 8; ++inOffset)
      for (std::size_t outOffset = 0; outOffset < 8; ++outOffset) {
        const float gain = kGains.at((count + inOffset + outOffset) % kGains.size());
        SCOPED_TRACE(testing::Message() << count << " samples, offsets " << inOffset << " and " << outOffset
                                        << ", gain " << gain);
        ASSERT_NO_FATAL_FAILURE(expectEqualToPlainLoop(samples, gain, 0.0F, inOffset, outOffset));
      }
  }
}

TEST_P(RenderKernel, FindsAPeakAtEveryPosition) {
  for (std::size_t count = 1; count <= 70; ++count)
    for (std::size_t loudest = 0; loudest < count; ++loudest) {
      std::vector<float> samples(count, 0.25F);
      samples[loudest] = -0.75F;
      ASSERT_NO_FATAL_FAILURE(expectEqualToPlainLoop(samples, 2.0F, 0.0F)) << loudest << " of " << count;
    }
}

TEST_P(RenderKernel, GoesOnFromThePeakItIsGiven) {
  for (const float peak : {0.0F, -0.0F, 0.8F, 7.0F, Limits::infinity(), Limits::quiet_NaN(), kOddNaN})
    for (const std::size_t count : {0U, 3U, 8U, 61U, 1023U})
      for (const std::uint32_t specialEvery : {0U, 3U})
        ASSERT_NO_FATAL_FAILURE(expectEqualToPlainLoop(makeSamples(count, specialEvery, 1), 0.7F, peak))
            << count << " samples, peak " << peak;
}

TEST_P(RenderKernel, DoesNotRaiseThePeakForNaN) {
  for (const std::size_t count : {1U, 8U, 64U, 97U}) {
    const std::vector<float> in(count, kOddNaN);
    std::vector<float> out(count, kSentinel);
    EXPECT_EQ(0.125F, GetParam().function(1.0F, in.data(), out.data(), count, 0.125F));
    EXPECT_THAT(out, testing::Each(testing::NanSensitiveFloatEq(Limits::quiet_NaN())));
  }
}

INSTANTIATE_TEST_SUITE_P(Kernels, RenderKernel, testing::ValuesIn(kernelsOfThisProcessor()),
                         [](const auto& instance) { return instance.param.name; });

TEST(FastestKernel, IsTheLastThatThisProcessorHas) {
  EXPECT_EQ(kernelsOfThisProcessor().back().function, fastestScaleAndPeak());
}

} // namespace
} // namespace sonvel
