#include "app/server_notice.h"

#include <QCoreApplication>

namespace sonvel {

QString serverNotice(AudioServer::Connection connection, AudioServer::Rights rights,
                     bool isPulseAudioServing) {
  if (isPulseAudioServing)
    return QCoreApplication::translate(
        "ServerNotice", "Sound runs on PulseAudio here, which Sonvel can't control. Install the "
                        "package pipewire-audio and log in again.");
  if (rights == AudioServer::Rights::restricted) return {};
  switch (connection) {
  case AudioServer::Connection::connecting:
    return QCoreApplication::translate("ServerNotice", "Waiting for the sound service to start.");
  case AudioServer::Connection::lost:
    return QCoreApplication::translate(
        "ServerNotice", "The sound service has stopped. Sonvel goes on by itself when it is back.");
  case AudioServer::Connection::connected:
    break;
  }
  return {};
}

ServerNotice::ServerNotice(AudioServer& server, Executor& mainThread,
                           std::function<bool()> isPulseAudioServing,
                           std::function<void(const QString&)> changed)
    : server_(server)
    , isPulseAudioServing_(std::move(isPulseAudioServing))
    , changed_(std::move(changed))
    , hasAnswered_(server.rights() != AudioServer::Rights::unknown)
    , isSoundElsewhere_(isPulseAudioServing_())
    , text_(serverNotice(server.connection(), server.rights(), isSoundElsewhere_))
    , self_(std::make_shared<ServerNotice*>(this)) {
  server_.onChange([&mainThread, weak = std::weak_ptr(self_)] {
    mainThread.post([weak] {
      if (const auto self = weak.lock()) (*self)->update();
    });
  });
  update(); // catches changes before this object listened
}

ServerNotice::~ServerNotice() {
  server_.onChange(nullptr);
}

void ServerNotice::update() {
  const auto rights = server_.rights();
  const bool hasAnswered = rights != AudioServer::Rights::unknown;
  isSoundElsewhere_ = isPulseAudioServing_();
  auto text = serverNotice(server_.connection(), rights, isSoundElsewhere_);
  if (text == text_ && hasAnswered == hasAnswered_) return;
  text_ = std::move(text);
  hasAnswered_ = hasAnswered;
  changed_(text_);
}

} // namespace sonvel
