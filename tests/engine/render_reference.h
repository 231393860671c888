#pragma once

#include <cmath>
#include <cstddef>

#if defined(__clang__)
#define SONVEL_ONE_BY_ONE _Pragma("clang loop vectorize(disable) interleave(disable) unroll(disable)")
#define SONVEL_NOT_VECTORIZED
#else
#define SONVEL_ONE_BY_ONE
#define SONVEL_NOT_VECTORIZED gnu::optimize("no-tree-vectorize"),
#endif

namespace sonvel {

/// The reference that every kernel must match bit for bit; compiled without vectors.
[[SONVEL_NOT_VECTORIZED gnu::noinline]] inline float
plainScaleAndPeak(float gain, const float* in, float* out, std::size_t count, float peak) noexcept {
  SONVEL_ONE_BY_ONE
  for (std::size_t k = 0; k < count; ++k) {
    const float sample = in[k];
    out[k] = gain * sample;
    if (std::fabs(sample) > peak) peak = std::fabs(sample);
  }
  return peak;
}

} // namespace sonvel

#undef SONVEL_ONE_BY_ONE
#undef SONVEL_NOT_VECTORIZED
