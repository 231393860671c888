#include "engine/probe_callback_realtime.h"
#include "engine/render_callback.h"
#include "expect.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <vector>

namespace sonvel {
namespace {

using fuzz::expect;

/// Buffers of one direction, each with memory of exactly its size, so that the sanitizer sees what goes
/// beyond.
struct Buffers {
  explicit Buffers(FuzzedDataProvider& input) {
    constexpr std::uint32_t kMostBytes = 600;
    for (auto count = input.ConsumeIntegralInRange(0, 5); count > 0; --count) {
      const auto size = input.ConsumeIntegralInRange<std::uint32_t>(0, kMostBytes);
      const bool isNull = input.ConsumeProbability<float>() < 0.1F;
      auto bytes = input.ConsumeBytes<std::uint8_t>(size);
      bytes.resize(size, 0x5A);
      bytes.shrink_to_fit();
      memory.push_back(std::move(bytes));
      list.push_back({.channelCount = 2, .sizeBytes = size, .data = isNull ? nullptr : memory.back().data()});
    }
  }

  std::vector<float> samples(std::size_t buffer) const {
    std::vector<float> floats(list[buffer].sizeBytes / sizeof(float));
    if (!floats.empty()) std::memcpy(floats.data(), memory[buffer].data(), floats.size() * sizeof(float));
    return floats;
  }

  std::vector<std::vector<std::uint8_t>> memory;
  std::vector<AudioBuffer> list;
};

/// Which NaN it is may differ.
bool isSame(float a, float b) {
  return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
         (std::isnan(a) && std::isnan(b));
}

float raised(float peak, float sample) {
  return std::fabs(sample) > peak ? std::fabs(sample) : peak;
}

void checkRender(FuzzedDataProvider& input, RenderCycle render) {
  RealtimeMixBox mix;
  mix.setGain(input.ConsumeFloatingPoint<float>());
  mix.setMuted(input.ConsumeBool());
  MixMetrics metrics;
  Buffers from(input);
  Buffers to(input);
  const auto before = to;
  const auto inputBefore = from.memory;
  const AudioBufferList inputs{from.list};
  AudioBufferList outputs{to.list};
  render(mix, metrics, inputs, outputs);
  expect(from.memory == inputBefore, "the input stays as it is");
  float peak = 0.0F;
  for (std::size_t i = 0; i < to.list.size(); ++i) {
    const bool isPlayed = i < from.list.size() && from.list[i].data != nullptr && to.list[i].data != nullptr;
    const auto played = isPlayed ? from.samples(i) : std::vector<float>();
    const auto written = to.samples(i);
    const auto untouched = before.samples(i);
    expect(to.list[i].writtenBytes == std::min(played.size(), written.size()) * sizeof(float),
           "what is written");
    for (std::size_t k = 0; k < written.size(); ++k) {
      const bool isWritten = k < played.size();
      if (isWritten) peak = raised(peak, played[k]);
      expect(isSame(written[k], isWritten ? mix.effectiveGain() * played[k] : untouched[k]),
             "gain times input");
    }
  }
  expect(metrics.inPeak() == peak, "the peak is that of what is played, and no NaN");
}

void checkProbe(FuzzedDataProvider& input) {
  MixMetrics metrics;
  Buffers from(input);
  probeCycle(metrics, {from.list});
  float peak = 0.0F;
  for (std::size_t i = 0; i < from.list.size(); ++i)
    if (from.list[i].data != nullptr)
      for (const float sample : from.samples(i))
        peak = raised(peak, sample);
  expect(metrics.inPeak() == peak, "the peak of all samples");
}

} // namespace
} // namespace sonvel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const auto callback = input.ConsumeIntegralInRange(0, 2);
  if (callback == 0)
    sonvel::checkProbe(input);
  else
    sonvel::checkRender(input, callback == 1 ? &sonvel::renderCycle : sonvel::fastestRenderCycle());
  return 0;
}
