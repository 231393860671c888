#include "desktop/remembered_identity.h"

#include <algorithm>
#include <ranges>

namespace sonvel::desktop {
namespace {

using namespace std::chrono_literals;

constexpr auto kStartingTime = 10s;
constexpr auto kFreshnessWhileStarting = 500ms; // one round of queries, shorter than the time between two
constexpr auto kFreshness = 15s;
constexpr auto kForgottenAfter = 2 * kFreshness; // not asked for meanwhile: it has probably ended

} // namespace

RememberedIdentity::RememberedIdentity(const ApplicationIdentity& identity, const Clock& clock)
    : identity_(identity)
    , clock_(clock) {}

bool RememberedIdentity::isFresh(const Answer& answer, Clock::TimePoint now) {
  const bool isStarting = answer.read - answer.known < kStartingTime;
  return now - answer.read < (isStarting ? Clock::Duration(kFreshnessWhileStarting) : kFreshness);
}

std::optional<std::string> RememberedIdentity::bundleIdentifier(const AudioClient& client) const {
  const auto now = clock_.now();
  const auto find = [&] {
    const auto [first, last] = answers_.equal_range(client.processID);
    const auto found =
        std::find_if(first, last, [&](const auto& entry) { return entry.second.client == client; });
    return found == last ? answers_.end() : found;
  };
  {
    const std::lock_guard lock(mutex_);
    if (const auto found = find(); found != answers_.end() && isFresh(found->second, now))
      return found->second.bundleIdentifier;
  }
  auto bundleIdentifier = identity_.bundleIdentifier(client);
  const std::lock_guard lock(mutex_);
  std::erase_if(answers_, [&](const auto& entry) { return now - entry.second.read > kForgottenAfter; });
  auto found = find();
  if (found == answers_.end())
    found = answers_.emplace(client.processID,
                             Answer{.client = client, .bundleIdentifier = {}, .known = now, .read = now});
  found->second.bundleIdentifier = bundleIdentifier;
  found->second.read = now;
  return bundleIdentifier;
}

} // namespace sonvel::desktop
