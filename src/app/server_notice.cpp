#include "app/server_notice.h"

namespace sonvel {

QString serverNotice(AudioServer::Connection connection, AudioServer::Rights rights) {
  if (rights == AudioServer::Rights::restricted) return {};
  switch (connection) {
  case AudioServer::Connection::connecting:
    return QStringLiteral("Waiting for the sound service to start.");
  case AudioServer::Connection::lost:
    return QStringLiteral("The sound service has stopped. Sonvel goes on by itself when it is back.");
  case AudioServer::Connection::connected:
    break;
  }
  return {};
}

ServerNotice::ServerNotice(AudioServer& server, Executor& mainThread,
                           std::function<void(const QString&)> changed)
    : server_(server)
    , changed_(std::move(changed))
    , text_(serverNotice(server.connection(), server.rights()))
    , self_(std::make_shared<ServerNotice*>(this)) {
  server_.onChange([&mainThread, weak = std::weak_ptr(self_)] {
    mainThread.post([weak] {
      if (const auto self = weak.lock()) (*self)->update();
    });
  });
  update(); // of what has happened in between
}

ServerNotice::~ServerNotice() {
  server_.onChange(nullptr);
}

void ServerNotice::update() {
  auto text = serverNotice(server_.connection(), server_.rights());
  if (text == text_) return;
  text_ = std::move(text);
  changed_(text_);
}

} // namespace sonvel
