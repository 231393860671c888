#pragma once

#include "engine/mix_metrics.h"
#include "platform/audio_types.h"

namespace sonvel {

/// One cycle of a capture probe: counts it and keeps the largest absolute sample of all cycles. Writes no
/// output. Real-time safe.
void probeCycle(MixMetrics& metrics, const AudioBufferList& input) noexcept;

} // namespace sonvel
