// The real-time thread runs this file: no allocation, lock, log, exception or system call.
#include "pipewire/io_cycle.h"

#include <pipewire/filter.h>

#include <cstddef>
#include <cstring>

namespace sonvel::pipewire {

namespace {

AudioBuffer bufferOf(void* port, std::uint32_t frames) noexcept {
  void* data = pw_filter_get_dsp_buffer(port, frames); // null while nothing is linked
  return {.channelCount = 1,
          .sizeBytes = data == nullptr ? 0 : static_cast<std::uint32_t>(frames * sizeof(float)),
          .data = data};
}

} // namespace

void runIOCycle(void* cycle, spa_io_position* position) noexcept {
  auto& io = *static_cast<IOCycle*>(cycle);
  const auto frames = static_cast<std::uint32_t>(position->clock.duration);
  for (std::size_t side = 0; side < kStereo; ++side) {
    io.inputs[side] = bufferOf(io.inputPorts[side], frames);
    io.outputs[side] = bufferOf(io.outputPorts[side], frames);
  }
  const AudioBufferList input{io.inputs};
  AudioBufferList output{io.outputs};
  const AudioTimeStamp now{.hostTimeNanoseconds = position->clock.nsec,
                           .sampleTimeFrames = position->clock.position};
  io.block(now, input, now, output, now);
  for (const AudioBuffer& buffer : io.outputs)
    if (buffer.data != nullptr && buffer.writtenBytes < buffer.sizeBytes)
      std::memset(static_cast<std::byte*>(buffer.data) + buffer.writtenBytes, 0,
                  buffer.sizeBytes - buffer.writtenBytes);
  // One writer, so no atomic increment is needed.
  io.cycles.store(io.cycles.load(std::memory_order_relaxed) + 1, std::memory_order_release);
}

} // namespace sonvel::pipewire
