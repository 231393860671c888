#pragma once

#include "pipewire/graph_edits.h"

#include <cstdint>
#include <optional>

namespace sonvel::pipewire {

/// Lets streams change sides just after a cycle has ended, when a whole quantum is left for it.
///
/// The real-time thread must not wake anyone, so the count of cycles is looked at every millisecond while
/// streams wait. A device that sleeps has no cycles, and nothing is heard then that could have a gap: after a
/// tenth of a second the gate opens by itself.
class CycleGate {
 public:
  /// Whether it is open at `now`, given the number of cycles that all filters have run so far. Shut, it
  /// counts from the first question on.
  bool isOpen(std::uint32_t cycles, GraphAlarm::Time now);

  /// Nobody waits any more.
  void reset() { waiting_.reset(); }

  /// How long to wait before it is asked again.
  static constexpr std::chrono::milliseconds kPoll{1};

 private:
  struct Waiting {
    std::uint32_t cycles = 0;
    GraphAlarm::Time since;
  };

  std::optional<Waiting> waiting_;
};

} // namespace sonvel::pipewire
