#pragma once

#include "platform/audio_types.h"

#include <spa/node/io.h>

#include <array>
#include <atomic>
#include <cstdint>

namespace sonvel::pipewire {

inline constexpr std::size_t kStereo = 2;

/// The data of the real-time thread while a filter runs. Written before the filter connects, then used only
/// by that thread; other threads may read `cycles`.
struct IOCycle {
  IOProcBlock block;
  std::array<void*, kStereo> inputPorts{};
  std::array<void*, kStereo> outputPorts{};
  std::array<AudioBuffer, kStereo> inputs{};
  std::array<AudioBuffer, kStereo> outputs{};
  std::atomic<std::uint32_t> cycles{0}; ///< incremented at the end of each cycle
};

/// Runs one cycle: passes the ports' buffers to the block, and silences what it leaves of the outputs.
/// Real-time safe if the block is. `cycle` is an IOCycle; the library defines the signature.
void runIOCycle(void* cycle, spa_io_position* position) noexcept;

} // namespace sonvel::pipewire
