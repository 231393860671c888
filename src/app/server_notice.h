#pragma once

#include "platform/audio_server.h"
#include "platform/executor.h"

#include <QString>
#include <functional>
#include <memory>

namespace sonvel {

/// What the user is to know of the sound server; empty while all is well, and when the server is there but
/// lets nothing be done: the connection is dropped for that too, and the model tells of it.
QString serverNotice(AudioServer::Connection connection, AudioServer::Rights rights,
                     bool isPulseAudioServing);

/// Follows the server's connection and tells the notice on the main thread.
class ServerNotice {
 public:
  /// `changed` is called on the main thread with each new text, and when the server has answered for the
  /// first time. `isPulseAudioServing` tells whether programs play to another sound system. The server, to
  /// which nobody else listens, and `mainThread` outlive this object. Main thread.
  ServerNotice(AudioServer& server, Executor& mainThread, std::function<bool()> isPulseAudioServing,
               std::function<void(const QString&)> changed);
  ~ServerNotice();
  ServerNotice(const ServerNotice&) = delete;
  ServerNotice& operator=(const ServerNotice&) = delete;

  /// Main thread.
  const QString& text() const noexcept { return text_; }

  /// Whether any server has told what it lets this program do. Main thread.
  bool hasServerAnswered() const noexcept { return hasAnswered_; }

  /// Whether programs play to another sound system. Main thread.
  bool isSoundElsewhere() const noexcept { return isSoundElsewhere_; }

  /// Looks again, as at each opening of the panel: who else plays sound is not told. Main thread.
  void update();

 private:
  AudioServer& server_;
  std::function<bool()> isPulseAudioServing_;
  std::function<void(const QString&)> changed_;
  bool hasAnswered_ = false;
  bool isSoundElsewhere_ = false;
  QString text_;
  std::shared_ptr<ServerNotice*> self_; ///< what is posted holds it weakly
};

} // namespace sonvel
