#include "updater/feed_check.h"

#include "updater/appcast_parser.h"

#include <utility>

namespace sonvel::updater {
namespace {

constexpr qint64 kMaximumFeedBytes = 4LL * 1024 * 1024;
constexpr Clock::Duration kStallTimeout = std::chrono::seconds(30);
constexpr Clock::Duration kTotalTimeout = std::chrono::minutes(2);

FetchRequest feedRequest(const QUrl& feed) {
  return {.address = feed,
          .policy = policyOfFeed(feed),
          .maximumBytes = kMaximumFeedBytes,
          .tooLarge = UpdateFailure::feedTooLarge,
          .stallTimeout = kStallTimeout,
          .totalTimeout = kTotalTimeout};
}

UpdateFailure failureOf(AppcastFault fault) {
  switch (fault) {
  case AppcastFault::notFeed:
    return UpdateFailure::feedNotFeed;
  case AppcastFault::documentType:
    return UpdateFailure::feedWithEntities;
  case AppcastFault::tooLarge:
    return UpdateFailure::feedTooLarge;
  case AppcastFault::notXml:
    break;
  }
  return UpdateFailure::feedUnreadable;
}

} // namespace

FeedCheck::FeedCheck(QNetworkAccessManager& network, Clock& clock, const QUrl& feed, Done done)
    : done_(std::move(done))
    , fetch_(
          network, clock, feedRequest(feed),
          [this](const QByteArray& piece) -> std::optional<UpdateFailure> {
            feed_.append(piece);
            return std::nullopt;
          },
          [this](std::optional<UpdateFailure> failure) { finish(failure); }) {}

void FeedCheck::finish(std::optional<UpdateFailure> failure) {
  Outcome outcome;
  if (failure) {
    outcome = *failure;
  } else {
    auto read = readAppcast(feed_);
    if (const auto* fault = std::get_if<AppcastFault>(&read))
      outcome = failureOf(*fault);
    else
      outcome = std::get<Appcast>(std::move(read));
  }
  const Done done = std::move(done_); // it may destroy this object
  done(outcome);
}

} // namespace sonvel::updater
