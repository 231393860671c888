#pragma once

#include "platform/clock.h"
#include "platform/update_run.h"
#include "updater/appcast.h"
#include "updater/main_thread.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>

namespace sonvel::updater {

/// What to fetch, and its limits.
struct FetchRequest {
  QUrl address;
  AddressPolicy policy; ///< also for redirects
  qint64 maximumBytes;
  UpdateFailure tooLarge;       ///< the failure if there is more
  Clock::Duration stallTimeout; ///< maximum wait for the next data
  Clock::Duration totalTimeout;
};

/// Fetches one file by HTTP/1.1. Follows up to five redirects within its policy, accepts only a complete
/// answer with status 200, and buffers at most 256 KiB. Destroying it cancels. Main thread.
class Fetch {
 public:
  using Failure = std::optional<UpdateFailure>;

  /// Receives the data in order. A returned failure ends the fetch.
  using Sink = std::function<Failure(const QByteArray&)>;

  /// Called once, at the end, never from the constructor; may destroy the fetch.
  using Done = std::function<void(Failure)>;

  /// `network` and `clock` outlive the fetch.
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
