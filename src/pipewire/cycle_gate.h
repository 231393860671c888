#pragma once

#include "pipewire/graph_edits.h"

#include <cstdint>
#include <optional>

namespace sonvel::pipewire {

/// Decides when streams may move between a tap and their device: just after a cycle has ended, when a whole
/// quantum remains.
///
/// The real-time thread must not wake other threads, so the count of cycles is polled every millisecond while
/// streams wait. A sleeping device has no cycles, and nothing can be interrupted there: after 100 ms the gate
/// opens without a cycle.
class CycleGate {
 public:
  /// Whether it is open at `now`. `cycles` is the number of cycles that all our nodes have run so far. While
  /// shut, it counts from the first call.
  bool isOpen(std::uint32_t cycles, GraphAlarm::Time now);

  /// Call when no stream waits any more.
  void reset() { waiting_.reset(); }

  /// Interval between calls.
  static constexpr std::chrono::milliseconds kPoll{1};

 private:
  struct Waiting {
    std::uint32_t cycles = 0;
    GraphAlarm::Time since;
  };

  std::optional<Waiting> waiting_;
};

} // namespace sonvel::pipewire
