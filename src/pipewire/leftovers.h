#pragma once

#include <chrono>
#include <string>

namespace sonvel::pipewire {

/// Sends every stream that is still meant for a tap whose name begins so back to where its user had it, and
/// leaves nothing of ours on it. For a run that has died. Blocks until it is done or `patience` has passed;
/// whether the server has confirmed it.
bool sweepLeftovers(const std::string& tapNamePrefix, std::chrono::milliseconds patience);

} // namespace sonvel::pipewire
