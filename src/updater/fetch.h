#pragma once

#include "platform/clock.h"
#include "platform/update_session.h"
#include "updater/appcast.h"
#include "updater/main_thread.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>

namespace sonvel::updater {

/// What to get, and when to give up.
struct FetchRequest {
  QUrl address;
  AddressPolicy policy; ///< for the address and for everything that it redirects to
  qint64 maximumBytes;
  UpdateFailure tooLarge;       ///< what it means if there is more
  Clock::Duration stallTimeout; ///< for every wait until something arrives
  Clock::Duration totalTimeout;
};

/// Gets one file from a server, by HTTP/1.1. Follows up to five redirects within its policy, takes only a
/// complete answer with status 200, and buffers at most 256 KiB. Destroying it cancels. Main thread.
class Fetch {
 public:
  using Failure = std::optional<UpdateFailure>;

  /// Takes what arrives, in order. A failure ends the fetch with it.
  using Sink = std::function<Failure(const QByteArray&)>;

  /// Called once, last, and never from the constructor; it may destroy the fetch.
  using Done = std::function<void(Failure)>;

  /// `network` and `clock` live longer than the fetch.
  Fetch(QNetworkAccessManager& network, Clock& clock, const FetchRequest& request, Sink sink, Done done);
  ~Fetch();
  Fetch(const Fetch&) = delete;
  Fetch& operator=(const Fetch&) = delete;

 private:
  void get(const QUrl& address);
  void restartStallTimer();
  bool readArrived();
  void follow(const QUrl& address);
  void finishReply();
  void end(Failure failure);

  QNetworkAccessManager& network_;
  Clock& clock_;
  FetchRequest request_;
  Sink sink_;
  Done done_;
  std::unique_ptr<QNetworkReply, void (*)(QNetworkReply*)> reply_;
  std::unique_ptr<Timer> stallTimer_;
  std::unique_ptr<Timer> totalTimer_;
  qint64 receivedBytes_ = 0;
  int redirects_ = 0;
  Relay relay_{onMainThread()};
};

} // namespace sonvel::updater
