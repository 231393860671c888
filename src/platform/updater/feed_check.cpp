#include "platform/updater/feed_check.h"

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

UpdateFailure failureOf(AppcastParser::Fault fault) {
  switch (fault) {
  case AppcastParser::Fault::notFeed:
    return UpdateFailure::feedNotFeed;
  case AppcastParser::Fault::documentType:
    return UpdateFailure::feedWithEntities;
  case AppcastParser::Fault::tooLarge:
    return UpdateFailure::feedTooLarge;
  case AppcastParser::Fault::notXml:
    break;
  }
  return UpdateFailure::feedUnreadable;
}

} // namespace

FeedCheck::FeedCheck(QNetworkAccessManager& network, Clock& clock, const QUrl& feed, Done done)
    : done_(std::move(done))
    , fetch_(
          network, clock, feedRequest(feed), [this](const QByteArray& piece) { return take(piece); },
          [this](std::optional<UpdateFailure> failure) { finish(failure); }) {}

std::optional<UpdateFailure> FeedCheck::take(const QByteArray& piece) {
  if (parser_.add(piece)) return std::nullopt;
  return failureOf(parser_.fault());
}

void FeedCheck::finish(std::optional<UpdateFailure> failure) {
  Outcome outcome;
  if (failure)
    outcome = *failure;
  else if (const auto appcast = parser_.finish())
    outcome = *appcast;
  else
    outcome = failureOf(parser_.fault());
  const Done done = std::move(done_); // it may destroy this object
  done(outcome);
}

} // namespace sonvel::updater
