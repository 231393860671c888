#pragma once

#include "platform/audio_types.h"

#include <spa/node/io.h>

#include <array>
#include <atomic>
#include <cstdint>

namespace sonvel::pipewire {

inline constexpr std::size_t kStereo = 2;

/// What the real-time thread works with while a filter runs. Written before the filter connects, then touched
/// by that thread alone; `cycles` is read by others.
struct IOCycle {
  IOProcBlock block;
  std::array<void*, kStereo> inputPorts{};
  std::array<void*, kStereo> outputPorts{};
  std::array<AudioBuffer, kStereo> inputs{};
  std::array<AudioBuffer, kStereo> outputs{};
  std::atomic<std::uint32_t> cycles{0}; ///< grows by one at the end of each cycle
};

/// Runs one cycle: hands the buffers of the ports to the block, the outputs silent. Real-time safe as far as
/// the block is. `cycle` is an IOCycle: the signature is the library's.
void runIOCycle(void* cycle, spa_io_position* position) noexcept;

} // namespace sonvel::pipewire
