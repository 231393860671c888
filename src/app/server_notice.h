#pragma once

#include "platform/audio_server.h"
#include "platform/executor.h"

#include <QString>
#include <functional>
#include <memory>

namespace sonvel {

/// The text about the sound server for the user. Empty if all is well, and if the server denies access: the
/// connection is dropped then too, and the model reports the denial.
QString serverNotice(AudioServer::Connection connection, AudioServer::Rights rights,
                     bool isPulseAudioServing);

/// Follows the server's connection and reports the text on the main thread.
class ServerNotice {
 public:
  /// `changed` is called on the main thread with each new text, and after the server's first answer.
  /// `isPulseAudioServing` tells whether programs play to another sound system. `server`, which must have no
  /// other listener, and `mainThread` outlive this object. Main thread.
  ServerNotice(AudioServer& server, Executor& mainThread, std::function<bool()> isPulseAudioServing,
               std::function<void(const QString&)> changed);
  ~ServerNotice();
  ServerNotice(const ServerNotice&) = delete;
  ServerNotice& operator=(const ServerNotice&) = delete;

  /// Main thread.
  const QString& text() const noexcept { return text_; }

  /// Whether a server has answered with this program's rights. Main thread.
  bool hasServerAnswered() const noexcept { return hasAnswered_; }

  /// Whether programs play to another sound system. Main thread.
  bool isSoundElsewhere() const noexcept { return isSoundElsewhere_; }

  /// Checks again; called at each opening of the panel, because other sound systems send no notice. Main
  /// thread.
  void update();

 private:
  AudioServer& server_;
  std::function<bool()> isPulseAudioServing_;
  std::function<void(const QString&)> changed_;
  bool hasAnswered_ = false;
  bool isSoundElsewhere_ = false;
  QString text_;
  std::shared_ptr<ServerNotice*> self_; ///< posted work holds it weakly
};

} // namespace sonvel
