#pragma once

#include "platform/audio_server.h"

#include <atomic>
#include <mutex>

namespace sonvel::pipewire {

/// What is known of the server, for anyone to ask. Written by the loop thread, which also runs the callback.
class ServerState final : public AudioServer {
 public:
  /// Loop thread, as for the next.
  void setRights(Rights rights) { set(rights_, rights); }

  void setConnection(Connection connection) { set(connection_, connection); }

  Rights rights() const override { return rights_; }

  Connection connection() const override { return connection_; }

  void onChange(std::function<void()> callback) override;

 private:
  template <class Value> void set(std::atomic<Value>& value, Value wanted) {
    if (value.exchange(wanted) != wanted) callBack();
  }

  void callBack();

  std::atomic<Rights> rights_ = Rights::unknown;
  std::atomic<Connection> connection_ = Connection::connecting;
  std::mutex callbackMutex_; ///< held while the callback runs
  std::function<void()> callback_;
};

} // namespace sonvel::pipewire
