#pragma once

#include "updater/appcast.h"
#include "updater/fetch.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <functional>
#include <variant>

namespace sonvel::updater {

/// One reading of a feed. Destroying it cancels. Main thread.
class FeedCheck {
 public:
  using Outcome = std::variant<Appcast, UpdateFailure>;

  /// Called once, never from the constructor; it may destroy the check.
  using Done = std::function<void(const Outcome&)>;

  /// `network` and `clock` live longer.
  FeedCheck(QNetworkAccessManager& network, Clock& clock, const QUrl& feed, Done done);

 private:
  void finish(std::optional<UpdateFailure> failure);

  QByteArray feed_; ///< what has arrived of it
  Done done_;
  Fetch fetch_;
};

} // namespace sonvel::updater
