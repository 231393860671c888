#pragma once

#include "engine/mix_metrics.h"
#include "engine/realtime_mix_box.h"
#include "engine/render_callback_realtime.h"
#include "platform/audio_types.h"

#include <memory>

namespace sonvel {

/// The fastest for this processor.
RenderCycle fastestRenderCycle() noexcept;

/// Creates the block that plays one channel: each cycle it copies the input to the output times the effective
/// gain of `mix`, and records the cycle in `metrics`. The block keeps both alive.
///
/// Creating, copying and destroying a block allocates or frees memory; calling it is real-time safe. Blocks
/// that share metrics must not run at the same time.
IOProcBlock makeRenderBlock(std::shared_ptr<const RealtimeMixBox> mix, std::shared_ptr<MixMetrics> metrics);

} // namespace sonvel
