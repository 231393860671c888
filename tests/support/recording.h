#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace sonvel::support {

/// What listener writes into the file that it was told, for readers that map it: the frames heard at a sink,
/// one after another, and the places where frames were lost. Both are rings.
struct Recording {
  struct Break {
    std::uint64_t frame;    ///< how many frames had been written
    std::uint64_t position; ///< of the next frame, by the graph's clock
  };

  struct Frame {
    float left;
    float right;
  };

  std::atomic<std::uint64_t> frameCount;
  std::atomic<std::uint64_t> breakCount; ///< the start is the first
  std::array<Break, 255> breaks;
  std::array<Frame, 1U << 22U> frames; ///< 87 seconds at 48 kHz
};

static_assert(offsetof(Recording, frames) == 4096);

} // namespace sonvel::support
