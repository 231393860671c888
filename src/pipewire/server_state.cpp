#include "pipewire/server_state.h"

#include <utility>

namespace sonvel::pipewire {

void ServerState::onChange(std::function<void()> callback) {
  const std::lock_guard lock(callbackMutex_);
  callback_ = std::move(callback);
}

void ServerState::callBack() {
  const std::lock_guard lock(callbackMutex_);
  if (callback_) callback_();
}

} // namespace sonvel::pipewire
