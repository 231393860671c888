#include "session/eventually.h"

#include <thread>

namespace sonvel::session {

bool eventually(const std::function<bool()>& holds, std::chrono::milliseconds within) {
  constexpr std::chrono::milliseconds kBetween{5};
  const auto deadline = std::chrono::steady_clock::now() + within;
  while (!holds()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(kBetween);
  }
  return true;
}

} // namespace sonvel::session
