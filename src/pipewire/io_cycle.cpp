// The real-time thread runs this file: no allocation, lock, log, exception or system call.
#include "pipewire/io_cycle.h"

#include <span>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace sonvel::pipewire {

namespace {

/// The samples that arrived; none if nothing plays into the port.
AudioBuffer takeInput(const IOPort& port, std::uint32_t bytesOfCycle) noexcept {
  AudioBuffer input{.channelCount = 1};
  if (port.io == nullptr) return input;
  if (port.io->status == SPA_STATUS_HAVE_DATA && port.io->buffer_id < port.bufferCount) {
    const spa_data& data = port.buffers[port.io->buffer_id]->datas[0];
    const std::uint32_t offset = std::min(data.chunk->offset, data.maxsize);
    input.data = static_cast<std::byte*>(data.data) + offset;
    input.sizeBytes = std::min({data.chunk->size, data.maxsize - offset, bytesOfCycle});
  }
  port.io->status = SPA_STATUS_NEED_DATA;
  return input;
}

/// The memory for the samples of this cycle; none if nothing is linked.
AudioBuffer takeOutput(const IOPort& port, std::uint32_t& nextBuffer, std::uint32_t bytesOfCycle) noexcept {
  AudioBuffer output{.channelCount = 1};
  if (port.io == nullptr || port.bufferCount == 0) return output;
  const std::uint32_t id = nextBuffer < port.bufferCount ? nextBuffer : 0;
  nextBuffer = id + 1;
  const spa_data& data = port.buffers[id]->datas[0];
  output.data = data.data;
  output.sizeBytes = std::min(data.maxsize, bytesOfCycle);
  *data.chunk = {.offset = 0, .size = output.sizeBytes, .stride = sizeof(float), .flags = 0};
  port.io->buffer_id = id;
  port.io->status = SPA_STATUS_HAVE_DATA;
  return output;
}

void runWired(IOCycle& cycle, const IOWiring& wiring) noexcept {
  if (wiring.position == nullptr) return;
  const spa_io_clock& clock = wiring.position->clock;
  const auto bytesOfCycle = static_cast<std::uint32_t>(clock.duration * sizeof(float));
  std::array<AudioBuffer, kStereo> inputs;
  std::array<AudioBuffer, kStereo> outputs;
  for (std::size_t side = 0; side < wiring.channelCount; ++side) {
    inputs[side] = takeInput(wiring.inputs[side], bytesOfCycle);
    outputs[side] = takeOutput(wiring.outputs[side], cycle.nextBuffers[side], bytesOfCycle);
  }
  const AudioBufferList input{std::span(inputs).first(wiring.channelCount)};
  AudioBufferList output{std::span(outputs).first(wiring.channelCount)};
  const AudioTimeStamp now{.hostTimeNanoseconds = clock.nsec, .sampleTimeFrames = clock.position};
  if (wiring.block) (*wiring.block)(now, input, now, output, now);
  for (const AudioBuffer& buffer : output.buffers)
    if (buffer.data != nullptr && buffer.writtenBytes < buffer.sizeBytes)
      std::memset(static_cast<std::byte*>(buffer.data) + buffer.writtenBytes, 0,
                  buffer.sizeBytes - buffer.writtenBytes);
}

} // namespace

void runIOCycle(IOCycle& cycle) noexcept {
  cycle.wiring.read([&cycle](const IOWiring& wiring) { runWired(cycle, wiring); });
  // One writer, so no atomic increment is needed.
  cycle.cycles.store(cycle.cycles.load(std::memory_order_relaxed) + 1, std::memory_order_release);
}

} // namespace sonvel::pipewire
