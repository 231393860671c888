#pragma once

#include "pipewire/realtime_value.h"
#include "platform/audio_types.h"

#include <spa/buffer/buffer.h>
#include <spa/node/io.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

namespace sonvel::pipewire {

inline constexpr std::size_t kStereo = 2;
inline constexpr std::size_t kMostBuffers = 16; ///< of a port

/// The memory of a port; the library owns it.
struct IOPort {
  spa_io_buffers* io = nullptr; ///< says which buffer is in use; null while nothing is linked
  std::array<spa_buffer*, kMostBuffers> buffers{};
  std::uint32_t bufferCount = 0;
};

/// What a node uses in its cycles.
struct IOWiring {
  std::shared_ptr<const IOProcBlock> block; ///< null: the outputs are silent
  const spa_io_position* position = nullptr;
  std::array<IOPort, kStereo> inputs;
  std::array<IOPort, kStereo> outputs;
  std::size_t channelCount = kStereo; ///< used ports in each direction
};

/// The data of a node's cycles. The real-time thread runs them; the loop thread replaces `wiring`.
struct IOCycle {
  RealtimeValue<IOWiring> wiring;
  std::atomic<std::uint32_t> cycles{0}; ///< incremented at the end of each cycle
  std::array<std::uint32_t, kStereo> nextBuffers{};
};

/// Runs one cycle: passes the ports' buffers to the block, and silences what it leaves of the outputs.
/// Real-time safe if the block is.
void runIOCycle(IOCycle& cycle) noexcept;

} // namespace sonvel::pipewire
