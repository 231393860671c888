#include "pipewire/cycle_gate.h"

namespace sonvel::pipewire {

namespace {

// Longer than the server's longest default cycle, 2,048 frames at 44,100 Hz.
constexpr std::chrono::milliseconds kLongestCycle{100};

} // namespace

bool CycleGate::isOpen(std::uint32_t cycles, GraphAlarm::Time now) {
  if (!waiting_) waiting_ = {cycles, now};
  return cycles != waiting_->cycles || now - waiting_->since >= kLongestCycle;
}

} // namespace sonvel::pipewire
