// The cost of a render cycle compared with memcpy of the same bytes and with the plain loop. Each iteration
// times all three in turn, so that other load affects them equally; the counters are medians over the
// iterations, the ratios are medians of the ratios within one iteration. --benchmark_counters_tabular=true
// prints a table. "whole" is a node's whole cycle on the same bytes as two mono ports: its buffers found, the
// callback, and what the callback has left of the outputs made silent.
#include "engine/render_callback.h"
#include "engine/render_reference.h"
#include "pipewire/io_cycle.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

using Nanoseconds = std::chrono::duration<double, std::nano>;

constexpr double kRunNanoseconds = 20'000; ///< about how long one subject is timed per iteration
constexpr float kGain = 0.7F;

/// The median of the recorded values.
class Median {
 public:
  void note(double value) { values_.push_back(value); }

  double value() {
    const auto middle = values_.begin() + static_cast<std::ptrdiff_t>(values_.size() / 2);
    std::nth_element(values_.begin(), middle, values_.end());
    return *middle;
  }

 private:
  std::vector<double> values_;
};

template <typename Action> double nanosecondsOf(std::size_t repetitions, Action action) {
  const auto start = std::chrono::steady_clock::now();
  for (std::size_t i = 0; i < repetitions; ++i) {
    action();
    benchmark::ClobberMemory();
  }
  return Nanoseconds{std::chrono::steady_clock::now() - start}.count() / static_cast<double>(repetitions);
}

/// Samples that start at a chosen offset within a page. If source and target start at the same offset, the
/// processor takes each load for one that depends on an earlier store, which slows the copy down and would
/// flatter us.
class Samples {
 public:
  Samples(std::size_t count, std::size_t placeInPage)
      : memory_(count + 2 * kPageFloats)
      , count_{count} {
    const auto address = reinterpret_cast<std::uintptr_t>(memory_.data()) / sizeof(float);
    data_ = memory_.data() + (kPageFloats - address % kPageFloats) + placeInPage;
  }

  Samples(const Samples&) = delete;
  Samples& operator=(const Samples&) = delete;

  float* data() { return data_; }

  std::size_t size() const { return count_; }

 private:
  static constexpr std::size_t kPageFloats = 1024;

  std::vector<float> memory_;
  std::size_t count_;
  float* data_;
};

/// A port with one buffer.
struct Port {
  sonvel::pipewire::IOPort wired(float* samples, std::uint32_t sizeBytes) {
    chunk.size = sizeBytes;
    data.chunk = &chunk;
    data.data = samples;
    data.maxsize = sizeBytes;
    buffer.n_datas = 1;
    buffer.datas = &data;
    return {.io = &io, .buffers = {&buffer}, .bufferCount = 1};
  }

  spa_io_buffers io{};
  spa_chunk chunk{};
  spa_data data{};
  spa_buffer buffer{};
};

/// One stereo input buffer, one output buffer, and the block between them.
class Channel {
 public:
  explicit Channel(std::size_t floats)
      : in_{floats, 0}
      , out_{floats, 512} {
    for (std::size_t k = 0; k < floats; ++k)
      in_.data()[k] = static_cast<float>(k % 701) / 701.0F - 0.5F;
    const auto sizeBytes = static_cast<std::uint32_t>(floats * sizeof(float));
    inBuffers_.push_back({.channelCount = 2, .sizeBytes = sizeBytes, .data = in_.data()});
    outBuffers_.push_back({.channelCount = 2, .sizeBytes = sizeBytes, .data = out_.data()});
    input_.buffers = inBuffers_;
    output_.buffers = outBuffers_;
    mix_->setGain(kGain);
    position_.clock.duration = floats / 2;
    sonvel::pipewire::IOWiring wiring{.block = std::make_shared<const sonvel::IOProcBlock>(block_),
                                      .position = &position_,
                                      .inputs = {},
                                      .outputs = {}};
    for (std::size_t side = 0; side < sonvel::pipewire::kStereo; ++side) {
      wiring.inputs.at(side) = inPorts_.at(side).wired(in_.data() + side * floats / 2, sizeBytes / 2);
      wiring.outputs.at(side) = outPorts_.at(side).wired(out_.data() + side * floats / 2, sizeBytes / 2);
    }
    whole_.wiring.replace(std::move(wiring));
  }

  void runWholeCycle() {
    for (auto& port : inPorts_)
      port.io.status = SPA_STATUS_HAVE_DATA;
    sonvel::pipewire::runIOCycle(whole_);
  }

  void runCycle() { block_(time_, input_, time_, output_, time_); }

  void runPlainLoop() {
    float peak = sonvel::plainScaleAndPeak(kGain, in_.data(), out_.data(), in_.size(), 0.0F);
    benchmark::DoNotOptimize(peak);
  }

  void copy() { std::memcpy(out_.data(), in_.data(), in_.size() * sizeof(float)); }

 private:
  Samples in_;
  Samples out_;
  std::vector<sonvel::AudioBuffer> inBuffers_;
  std::vector<sonvel::AudioBuffer> outBuffers_;
  sonvel::AudioBufferList input_;
  sonvel::AudioBufferList output_;
  sonvel::AudioTimeStamp time_;
  std::shared_ptr<sonvel::RealtimeMixBox> mix_ = std::make_shared<sonvel::RealtimeMixBox>();
  sonvel::IOProcBlock block_ = sonvel::makeRenderBlock(mix_, std::make_shared<sonvel::MixMetrics>());
  spa_io_position position_{};
  std::array<Port, sonvel::pipewire::kStereo> inPorts_;
  std::array<Port, sonvel::pipewire::kStereo> outPorts_;
  sonvel::pipewire::IOCycle whole_;
};

void renderCycleBesideCopy(benchmark::State& state) {
  Channel channel{static_cast<std::size_t>(state.range(0))};
  const double onceNanoseconds = nanosecondsOf(1000, [&channel] { channel.runCycle(); });
  const auto repetitions = static_cast<std::size_t>(std::max(1.0, kRunNanoseconds / onceNanoseconds));
  Median cycle;
  Median copy;
  Median plain;
  Median cyclePerCopy;
  Median plainPerCopy;
  Median wholePerCopy;
  for ([[maybe_unused]] auto iteration : state) {
    const double copyTime = nanosecondsOf(repetitions, [&channel] { channel.copy(); });
    const double cycleTime = nanosecondsOf(repetitions, [&channel] { channel.runCycle(); });
    const double plainTime = nanosecondsOf(repetitions / 8 + 1, [&channel] { channel.runPlainLoop(); });
    state.SetIterationTime(cycleTime * 1e-9);
    cycle.note(cycleTime);
    copy.note(copyTime);
    plain.note(plainTime);
    cyclePerCopy.note(cycleTime / copyTime);
    plainPerCopy.note(plainTime / copyTime);
    wholePerCopy.note(nanosecondsOf(repetitions, [&channel] { channel.runWholeCycle(); }) / copyTime);
  }
  state.counters["cycle_ns"] = cycle.value();
  state.counters["memcpy_ns"] = copy.value();
  state.counters["plain_ns"] = plain.value();
  state.counters["cycle/memcpy"] = cyclePerCopy.value();
  state.counters["plain/memcpy"] = plainPerCopy.value();
  state.counters["whole/memcpy"] = wholePerCopy.value();
}

} // namespace

BENCHMARK(renderCycleBesideCopy)->RangeMultiplier(2)->Range(64, 8192)->UseManualTime()->Iterations(1001);

BENCHMARK_MAIN();
