#pragma once

#include <QByteArray>
#include <QHash>
#include <QSslConfiguration>
#include <QString>
#include <QTcpServer>
#include <QUrl>
#include <memory>
#include <optional>

class QTcpSocket;

namespace sonvel::updater {

/// The answer to one request.
struct Answer {
  /// What happens to the connection after the body.
  enum class Ending { closed, keptOpen };

  int status = 200;
  QByteArray headers = {}; ///< more of them, each with its line end
  QByteArray body = {};
  qint64 repeats = 1; ///< how often the body comes
  std::optional<qint64> announcedLength = std::nullopt;
  Ending ending = Ending::closed;
};

/// An HTTP server on the loopback interface, with TLS if it gets a certificate. Lives in the test's own
/// thread and event loop.
class FeedServer {
 public:
  explicit FeedServer(const std::optional<QSslConfiguration>& security = std::nullopt);

  void set(const QString& path, const Answer& answer) { answers_.insert(path, answer); }

  void setRedirect(const QString& path, const QString& target);

  /// Takes no connections from now on.
  void shutDown() { server_->close(); }

  QUrl url(const QString& path) const;

  /// How many requests for `path` have come.
  int requestCount(const QString& path) const { return requestCounts_.value(path); }

 private:
  void serve(QTcpSocket* socket);
  void reply(QTcpSocket* socket, const QString& path);

  bool isSecure_;
  quint16 port_ = 0;
  std::unique_ptr<QTcpServer> server_;
  QHash<QString, Answer> answers_;
  QHash<QString, int> requestCounts_;
};

} // namespace sonvel::updater
