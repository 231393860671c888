#include "engine/render_callback.h"

#include "engine/render_callback_realtime.h"

#include <utility>

namespace sonvel {

IOProcBlock makeRenderBlock(std::shared_ptr<const RealtimeMixBox> mix, std::shared_ptr<MixMetrics> metrics) {
  return
      [mix = std::move(mix), metrics = std::move(metrics)](
          const AudioTimeStamp&, const AudioBufferList& input, const AudioTimeStamp&, AudioBufferList& output,
          const AudioTimeStamp&) noexcept { renderCycle(&scaleAndPeak, *mix, *metrics, input, output); };
}

} // namespace sonvel
