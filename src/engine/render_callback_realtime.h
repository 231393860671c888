#pragma once

#include "engine/mix_metrics.h"
#include "engine/realtime_mix_box.h"
#include "platform/audio_types.h"

#include <cstddef>

// Everything declared here runs in real time: no allocation, lock, log, exception or system call.

namespace sonvel {

/// Writes `gain * in[k]` to `out[k]` for each k < `count`, and returns the maximum of `peak` and all |in[k]|.
/// A NaN is multiplied and written but never raises the peak. `gain` and `peak` may have any value. `in` and
/// `out` are aligned for float, and are equal or don't overlap.
using ScaleAndPeak = float (*)(float gain, const float* in, float* out, std::size_t count,
                               float peak) noexcept;

/// For every processor.
float scaleAndPeak(float gain, const float* in, float* out, std::size_t count, float peak) noexcept;

#if defined(__x86_64__)
/// Only for processors with AVX2; twice as fast there.
float scaleAndPeakAvx2(float gain, const float* in, float* out, std::size_t count, float peak) noexcept;
#endif

/// One cycle of a channel: buffer i of `input`, taken as a flat array whatever its channel count, plays into
/// buffer i of `output`, up to the shorter length. Buffers without a partner are left unchanged.
void renderCycle(ScaleAndPeak kernel, const RealtimeMixBox& mix, MixMetrics& metrics,
                 const AudioBufferList& input, AudioBufferList& output) noexcept;

} // namespace sonvel
