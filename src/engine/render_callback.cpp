#include "engine/render_callback.h"

#include <utility>

namespace sonvel {

ScaleAndPeak fastestScaleAndPeak() noexcept {
#if defined(__x86_64__)
  // AVX-512 is no faster: two AVX2 vectors already reach the cache's write bandwidth.
  if (__builtin_cpu_supports("avx2")) return &scaleAndPeakAvx2;
#endif
  return &scaleAndPeak;
}

IOProcBlock makeRenderBlock(std::shared_ptr<const RealtimeMixBox> mix, std::shared_ptr<MixMetrics> metrics) {
  return
      [kernel = fastestScaleAndPeak(), mix = std::move(mix), metrics = std::move(metrics)](
          const AudioTimeStamp&, const AudioBufferList& input, const AudioTimeStamp&, AudioBufferList& output,
          const AudioTimeStamp&) noexcept { renderCycle(kernel, *mix, *metrics, input, output); };
}

} // namespace sonvel
