#pragma once

#include "platform/audio_server.h"

#include <mutex>

namespace sonvel::simulated {

/// A scripted connection to a sound server; initially there is none. Any thread. The callback runs on the
/// thread that makes the change.
class SimulatedServer final : public AudioServer {
 public:
  void setRights(Rights rights);
  void setConnection(Connection connection);

  Rights rights() const override;
  Connection connection() const override;
  void onChange(std::function<void()> callback) override;

 private:
  template <class Value> void set(Value& value, Value wanted);

  mutable std::mutex mutex_; ///< guards the two members below
  Rights rights_ = Rights::unknown;
  Connection connection_ = Connection::connecting;
  std::mutex callbackMutex_; ///< held while the callback runs
  std::function<void()> callback_;
};

} // namespace sonvel::simulated
