#pragma once

#include "engine/mix_metrics.h"
#include "engine/realtime_mix_box.h"
#include "platform/audio_types.h"

#include <cstddef>

// Everything declared here runs in real time: no allocation, lock, log, exception or system call.

namespace sonvel {

/// Writes `gain * in[k]` to `out[k]` for each k below `count`, and returns the largest of `peak` and all
/// |in[k]|. A NaN is multiplied and written, but never raises the peak. Any `gain` and `peak` are taken as
/// they are. `in` and `out` are aligned for a float, and are either the same run or don't overlap.
using ScaleAndPeak = float (*)(float gain, const float* in, float* out, std::size_t count,
                               float peak) noexcept;

/// For every processor.
float scaleAndPeak(float gain, const float* in, float* out, std::size_t count, float peak) noexcept;

#if defined(__x86_64__)
/// For a processor with AVX2 alone; twice as fast there.
float scaleAndPeakAvx2(float gain, const float* in, float* out, std::size_t count, float peak) noexcept;
#endif

/// One cycle of a channel: buffer i of `input`, a flat run of floats however many channels it has, plays into
/// buffer i of `output`, as far as both go; what has no partner is left as it is.
void renderCycle(ScaleAndPeak kernel, const RealtimeMixBox& mix, MixMetrics& metrics,
                 const AudioBufferList& input, AudioBufferList& output) noexcept;

} // namespace sonvel
