#include "engine/hardware_controller.h"

#include <cassert>

namespace sonvel {

HardwareController::HardwareController(AudioEnvironment environment, Clock& clock,
                                       std::weak_ptr<Executor> executor)
    : environment_(std::move(environment))
    , clock_(clock)
    , executor_(std::move(executor)) {}

void HardwareController::assertOnExecutor() const {
#ifndef NDEBUG
  const auto executor = executor_.lock();
  assert(executor && executor->isCurrent());
#endif
}

} // namespace sonvel
