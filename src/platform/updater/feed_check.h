#pragma once

#include "platform/updater/appcast_parser.h"
#include "platform/updater/fetch.h"

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
  std::optional<UpdateFailure> take(const QByteArray& piece);
  void finish(std::optional<UpdateFailure> failure);

  AppcastParser parser_;
  Done done_;
  Fetch fetch_;
};

} // namespace sonvel::updater
