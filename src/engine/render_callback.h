#pragma once

#include "engine/mix_metrics.h"
#include "engine/realtime_mix_box.h"
#include "engine/render_callback_realtime.h"
#include "platform/audio_types.h"

#include <memory>

namespace sonvel {

/// The fastest of the kernels that this processor can run.
ScaleAndPeak fastestScaleAndPeak() noexcept;

/// Makes the block that plays one channel: each cycle it copies the input to the output times the effective
/// gain of `mix`, and tells `metrics` what it saw. The block keeps both alive.
///
/// Making, copying and destroying a block allocates or frees; calling it is real-time safe. Blocks that share
/// their metrics must not be called at the same time.
IOProcBlock makeRenderBlock(std::shared_ptr<const RealtimeMixBox> mix, std::shared_ptr<MixMetrics> metrics);

} // namespace sonvel
