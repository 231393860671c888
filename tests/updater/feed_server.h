#pragma once

#include <gtest/gtest.h>

#include <QHash>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QUrl>
#include <memory>

namespace sonvel::updater {

/// This run's server certificate with its key. Valid only for "localhost"; this process trusts it.
inline const QSslConfiguration& serverCertificate() {
  static const QSslConfiguration made = [] {
    QProcess openssl;
    openssl.startCommand("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 "
                         "-subj /CN=localhost -addext subjectAltName=DNS:localhost -keyout -");
    EXPECT_TRUE(openssl.waitForFinished()) << openssl.errorString().toStdString();
    const QByteArray text = openssl.readAllStandardOutput();
    QSslConfiguration client = QSslConfiguration::defaultConfiguration();
    QSslConfiguration server = client;
    server.setLocalCertificate(QSslCertificate(text));
    server.setPrivateKey(QSslKey(text, QSsl::Ec));
    server.setAllowedNextProtocols({"h2", "http/1.1"}); // clients that ask for HTTP/2 get no answer
    client.addCaCertificate(server.localCertificate());
    QSslConfiguration::setDefaultConfiguration(client);
    return server;
  }();
  return made;
}

/// The answer to a request.
struct Answer {
  enum class Ending {
    closed,
    keptOpen,
    endless, ///< repeats the body without end; only with TLS
  };

  int status = 200;
  QByteArray headers = {}; ///< each with its line end; Content-Length is added if missing
  QByteArray body = {};
  Ending ending = Ending::closed;
};

/// An HTTP server on the loopback interface. Runs in the event loop of the test's thread.
class FeedServer {
 public:
  explicit FeedServer(bool isSecure = true)
      : host(isSecure ? "https://localhost" : "http://localhost")
      , server_(isSecure ? std::make_unique<QSslServer>() : std::make_unique<QTcpServer>()) {
    if (auto* secure = qobject_cast<QSslServer*>(server_.get()))
      secure->setSslConfiguration(serverCertificate());
    EXPECT_TRUE(server_->listen(QHostAddress::LocalHost));
    QObject::connect(server_.get(), &QTcpServer::pendingConnectionAvailable, server_.get(), [this] {
      while (QTcpSocket* socket = server_->nextPendingConnection())
        serve(socket);
    });
  }

  void set(const QString& path, const Answer& answer) { answers_.insert(path, answer); }

  void redirect(const QString& path, const QByteArray& target) {
    set(path, {.status = 302, .headers = "Location: " + target + "\r\n"});
  }

  /// Accepts no more connections.
  void shutDown() { server_->close(); }

  QByteArray url(const QByteArray& path) const {
    return host + ':' + QByteArray::number(server_->serverPort()) + path;
  }

  /// The number of requests for `path`.
  int requestCount(const QString& path) const { return requestCounts_.value(path); }

  QByteArray host; ///< as in the clients' URLs, with the scheme

 private:
  void serve(QTcpSocket* socket) {
    const auto read = [this, socket] {
      const QByteArray request = socket->peek(10'000);
      if (!request.endsWith("\r\n\r\n")) return;
      socket->skip(request.size());
      reply(socket, QString::fromLatin1(request.split(' ').value(1)));
    };
    QObject::connect(socket, &QTcpSocket::readyRead, socket, read);
    QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    read();
  }

  void reply(QTcpSocket* socket, const QString& path) {
    ++requestCounts_[path];
    const Answer answer = answers_.value(path, {.status = 404});
    const bool isEndless = answer.ending == Answer::Ending::endless;
    socket->write("HTTP/1.1 " + QByteArray::number(answer.status) + " Answer\r\nConnection: close\r\n");
    socket->write(answer.headers);
    if (!isEndless && !answer.headers.startsWith("Content-Length"))
      socket->write("Content-Length: " + QByteArray::number(answer.body.size()) + "\r\n");
    socket->write("\r\n" + answer.body);
    if (answer.ending == Answer::Ending::closed) socket->disconnectFromHost();
    if (!isEndless) return;
    auto* secure = qobject_cast<QSslSocket*>(socket);
    QObject::connect(secure, &QSslSocket::encryptedBytesWritten, secure, [secure, answer] {
      if (secure->encryptedBytesToWrite() == 0) secure->write(answer.body);
    });
  }

  std::unique_ptr<QTcpServer> server_;
  QHash<QString, Answer> answers_;
  QHash<QString, int> requestCounts_;
};

} // namespace sonvel::updater
