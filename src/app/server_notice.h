#pragma once

#include "platform/audio_server.h"
#include "platform/executor.h"

#include <QString>
#include <functional>
#include <memory>

namespace sonvel {

/// What the user is to know of the sound server; empty while all is well, and when the server is there but
/// lets nothing be done: the connection is dropped for that too, and the model tells of it.
QString serverNotice(AudioServer::Connection connection, AudioServer::Rights rights);

/// Follows the server's connection and tells the notice on the main thread.
class ServerNotice {
 public:
  /// `changed` is called on the main thread with each new text. The server, to which nobody else listens, and
  /// `mainThread` outlive this object. Main thread.
  ServerNotice(AudioServer& server, Executor& mainThread, std::function<void(const QString&)> changed);
  ~ServerNotice();
  ServerNotice(const ServerNotice&) = delete;
  ServerNotice& operator=(const ServerNotice&) = delete;

  /// Main thread.
  const QString& text() const noexcept { return text_; }

 private:
  void update();

  AudioServer& server_;
  std::function<void(const QString&)> changed_;
  QString text_;
  std::shared_ptr<ServerNotice*> self_; ///< what is posted holds it weakly
};

} // namespace sonvel
