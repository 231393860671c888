#include "engine/render_callback.h"

#include <utility>

namespace sonvel {

RenderCycle fastestRenderCycle() noexcept {
#if defined(__x86_64__)
  // AVX-512 is no faster: two AVX2 vectors already reach the cache's write bandwidth.
  if (__builtin_cpu_supports("avx2")) return &renderCycleAvx2;
#endif
  return &renderCycle;
}

IOProcBlock makeRenderBlock(std::shared_ptr<const RealtimeMixBox> mix, std::shared_ptr<MixMetrics> metrics) {
  return
      [render = fastestRenderCycle(), mix = std::move(mix), metrics = std::move(metrics)](
          const AudioTimeStamp&, const AudioBufferList& input, const AudioTimeStamp&, AudioBufferList& output,
          const AudioTimeStamp&) noexcept { render(*mix, *metrics, input, output); };
}

} // namespace sonvel
