#include "updater/fetch.h"

#include <QNetworkRequest>
#include <utility>

namespace sonvel::updater {
namespace {

constexpr qint64 kReadBufferBytes = 256LL * 1024;
constexpr int kMaximumRedirects = 5;
constexpr int kStatusOk = 200;

QNetworkRequest networkRequest(const QUrl& address) {
  QNetworkRequest network(address);
  network.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
  network.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
  network.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
  network.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
  network.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
  network.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
  // Qt 6.4.2's implementation has known faults
  network.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
  network.setRawHeader("User-Agent", "Sonvel");
  // If we set the encoding, Qt does not decode, so the counted bytes are those that were sent.
  network.setRawHeader("Accept-Encoding", "identity");
  return network;
}

UpdateFailure failureOf(QNetworkReply::NetworkError error) {
  switch (error) {
  case QNetworkReply::SslHandshakeFailedError:
    return UpdateFailure::insecureConnection;
  case QNetworkReply::RemoteHostClosedError:
    return UpdateFailure::interrupted;
  default:
    // Lower values are errors of the connection or proxy, the others are the server's.
    return error < QNetworkReply::ContentAccessDenied ? UpdateFailure::noNetwork
                                                      : UpdateFailure::serverRefused;
  }
}

int statusOf(const QNetworkReply& reply) {
  return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

/// Drops a reply that may be emitting a signal.
void dropReply(QNetworkReply* reply) {
  QObject::disconnect(reply, nullptr, nullptr, nullptr);
  reply->abort();
  reply->deleteLater();
}

} // namespace

Fetch::Fetch(QNetworkAccessManager& network, Clock& clock, const FetchRequest& request, Sink sink, Done done)
    : network_(network)
    , clock_(clock)
    , request_(request)
    , sink_(std::move(sink))
    , done_(std::move(done))
    , reply_(nullptr, dropReply) {
  if (!isAllowed(request_.address, request_.policy)) {
    relay_.bind([this] { end(UpdateFailure::insecureDownload); })();
    return;
  }
  get(request_.address);
  totalTimer_ = clock_.callAfter(request_.totalTimeout, relay_.bind([this] { end(UpdateFailure::tooSlow); }));
}

Fetch::~Fetch() = default;

void Fetch::get(const QUrl& address) {
  reply_.reset(network_.get(networkRequest(address)));
  QNetworkReply* reply = reply_.get();
  reply->setReadBufferSize(kReadBufferBytes);
  QObject::connect(reply, &QNetworkReply::readyRead, reply, [this] { readArrived(); });
  QObject::connect(
      reply, &QNetworkReply::finished, reply, [this] { finishReply(); }, Qt::QueuedConnection);
  restartStallTimer();
}

void Fetch::restartStallTimer() {
  stallTimer_ = clock_.callAfter(request_.stallTimeout, relay_.bind([this] { end(UpdateFailure::tooSlow); }));
}

/// False if this has ended the fetch, which may have been deleted.
bool Fetch::readArrived() {
  // With another status the body is not the requested file.
  if (statusOf(*reply_) != kStatusOk) {
    reply_->skip(reply_->bytesAvailable());
    return true;
  }
  restartStallTimer();
  const QByteArray piece = reply_->readAll();
  receivedBytes_ += piece.size();
  const Failure failure = receivedBytes_ > request_.maximumBytes ? request_.tooLarge : sink_(piece);
  if (failure) end(failure);
  return !failure;
}

void Fetch::follow(const QUrl& address) {
  if (++redirects_ > kMaximumRedirects) return end(UpdateFailure::tooManyRedirects);
  if (!isAllowed(address, request_.policy)) return end(UpdateFailure::insecureRedirect);
  get(address);
}

void Fetch::finishReply() {
  if (reply_->error() != QNetworkReply::NoError) return end(failureOf(reply_->error()));
  const QUrl target = reply_->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
  if (!target.isEmpty()) return follow(reply_->url().resolved(target));
  if (statusOf(*reply_) != kStatusOk) return end(UpdateFailure::serverRefused);
  if (reply_->bytesAvailable() > 0 && !readArrived()) return;
  end(std::nullopt);
}

void Fetch::end(Failure failure) {
  if (!done_) return;
  reply_.reset();
  stallTimer_.reset();
  totalTimer_.reset();
  std::exchange(done_, nullptr)(failure);
}

} // namespace sonvel::updater
