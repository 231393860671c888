#include "updater/feed_server.h"

#include <gtest/gtest.h>

#include <QSslServer>
#include <QSslSocket>
#include <QTcpSocket>

namespace sonvel::updater {
namespace {

constexpr qint64 kPieceBytes = 64 * 1024;

std::unique_ptr<QTcpServer> makeServer(const std::optional<QSslConfiguration>& security) {
  if (!security) return std::make_unique<QTcpServer>();
  auto server = std::make_unique<QSslServer>();
  QSslConfiguration offered = *security;
  offered.setAllowedNextProtocols({"h2", "http/1.1"}); // a client that asks for HTTP/2 gets it, and no answer
  server->setSslConfiguration(offered);
  return server;
}

/// Sends a body as often as asked, at the speed of the receiver.
class Sender : public QObject {
 public:
  Sender(QTcpSocket* socket, Answer answer)
      : QObject(socket)
      , socket_(socket)
      , answer_(std::move(answer)) {
    connect(socket, &QTcpSocket::bytesWritten, this, [this] { send(); });
    if (auto* secure = qobject_cast<QSslSocket*>(socket))
      connect(secure, &QSslSocket::encryptedBytesWritten, this, [this] { send(); });
    send();
  }

 private:
  void send() {
    while (answer_.repeats > 0 && waitingBytes() < kPieceBytes &&
           socket_->state() == QAbstractSocket::ConnectedState) {
      --answer_.repeats;
      socket_->write(answer_.body);
    }
    if (answer_.repeats == 0 && answer_.ending == Answer::Ending::closed) socket_->disconnectFromHost();
  }

  /// What waits before and after encryption.
  qint64 waitingBytes() const {
    const auto* secure = qobject_cast<const QSslSocket*>(socket_);
    return socket_->bytesToWrite() + (secure ? secure->encryptedBytesToWrite() : 0);
  }

  QTcpSocket* socket_;
  Answer answer_;
};

} // namespace

FeedServer::FeedServer(const std::optional<QSslConfiguration>& security)
    : isSecure_(security.has_value())
    , server_(makeServer(security)) {
  EXPECT_TRUE(server_->listen(QHostAddress::LocalHost));
  port_ = server_->serverPort();
  QObject::connect(server_.get(), &QTcpServer::pendingConnectionAvailable, server_.get(), [this] {
    while (QTcpSocket* socket = server_->nextPendingConnection())
      serve(socket);
  });
}

void FeedServer::setRedirect(const QString& path, const QString& target) {
  set(path, {.status = 302, .headers = "Location: " + target.toUtf8() + "\r\n"});
}

QUrl FeedServer::url(const QString& path) const {
  return QUrl(QStringLiteral("%1://localhost:%2%3")
                  .arg(isSecure_ ? QStringLiteral("https") : QStringLiteral("http"))
                  .arg(port_)
                  .arg(path));
}

void FeedServer::serve(QTcpSocket* socket) {
  const auto request = std::make_shared<QByteArray>();
  const auto read = [this, socket, request] {
    if (request->endsWith("\r\n\r\n")) return;
    request->append(socket->readAll());
    if (!request->endsWith("\r\n\r\n")) return;
    reply(socket, QString::fromLatin1(request->split(' ').value(1)));
  };
  QObject::connect(socket, &QTcpSocket::readyRead, socket, read);
  QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
  read();
}

void FeedServer::reply(QTcpSocket* socket, const QString& path) {
  ++requestCounts_[path];
  const Answer answer = answers_.value(path, {.status = 404, .body = "<html>nothing here</html>"});
  const qint64 length =
      answer.announcedLength ? *answer.announcedLength : answer.body.size() * answer.repeats;
  socket->write("HTTP/1.1 " + QByteArray::number(answer.status) + " Answer\r\n" + answer.headers);
  if (length >= 0) socket->write("Content-Length: " + QByteArray::number(length) + "\r\n");
  socket->write("Connection: close\r\n\r\n");
  static_cast<void>(std::make_unique<Sender>(socket, answer).release()); // the socket's child
}

} // namespace sonvel::updater
