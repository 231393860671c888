#pragma once

#include "engine/mix_metrics.h"
#include "engine/realtime_mix_box.h"
#include "platform/audio_types.h"

// Everything declared here runs in real time: no allocation, lock, log, exception or system call.

namespace sonvel {

/// One cycle of a channel: buffer i of `input`, taken as a flat array whatever its channel count, plays times
/// the gain into buffer i of `output`, up to the shorter length, and is counted there as written. Buffers
/// without a partner are left unchanged. A NaN is multiplied and written but never raises the peak. Two
/// buffers that are a pair are aligned for float, and are equal or don't overlap.
using RenderCycle = void (*)(const RealtimeMixBox& mix, MixMetrics& metrics, const AudioBufferList& input,
                             AudioBufferList& output) noexcept;

/// For every processor.
void renderCycle(const RealtimeMixBox& mix, MixMetrics& metrics, const AudioBufferList& input,
                 AudioBufferList& output) noexcept;

#if defined(__x86_64__)
/// Only for processors with AVX2; faster there.
void renderCycleAvx2(const RealtimeMixBox& mix, MixMetrics& metrics, const AudioBufferList& input,
                     AudioBufferList& output) noexcept;
#endif

} // namespace sonvel
