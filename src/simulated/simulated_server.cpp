#include "simulated/simulated_server.h"

#include <utility>

namespace sonvel::simulated {

void SimulatedServer::setRights(Rights rights) {
  set(rights_, rights);
}

void SimulatedServer::setConnection(Connection connection) {
  set(connection_, connection);
}

AudioServer::Rights SimulatedServer::rights() const {
  const std::lock_guard lock(mutex_);
  return rights_;
}

AudioServer::Connection SimulatedServer::connection() const {
  const std::lock_guard lock(mutex_);
  return connection_;
}

void SimulatedServer::onChange(std::function<void()> callback) {
  const std::lock_guard lock(callbackMutex_);
  callback_ = std::move(callback);
}

template <class Value> void SimulatedServer::set(Value& value, Value wanted) {
  const std::lock_guard callbackLock(callbackMutex_);
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(value, wanted) == wanted) return;
  }
  if (callback_) callback_();
}

} // namespace sonvel::simulated
