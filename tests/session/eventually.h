#pragma once

#include <chrono>
#include <functional>

namespace sonvel::session {

/// Asks until it holds, every few milliseconds; false when it still doesn't after the time given.
[[nodiscard]] bool eventually(const std::function<bool()>& holds,
                              std::chrono::milliseconds within = std::chrono::seconds{20});

} // namespace sonvel::session
