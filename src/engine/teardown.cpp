// Removes sessions, which gives applications their own output back, and retries until it succeeds.

#include "engine/configuration.h"
#include "engine/hardware_controller.h"
#include "engine/tap_session.h"

#include <algorithm>

namespace sonvel {
namespace {

constexpr std::chrono::seconds kTeardownRetryInterval{2};

HardwareTeardownResult resultOf(AudioObjectID appID, const std::optional<FailedCall>& failed) {
  if (!failed) return {.appID = appID, .failures = {}};
  return {.appID = appID, .failures = {failed->name + " (OSStatus " + std::to_string(failed->status) + ")"}};
}

} // namespace

HardwareTeardownResult HardwareController::teardown(TapSession& session) {
  return resultOf(session.app.objectID, takeDown(environment_.hardware, session));
}

std::optional<HardwareTeardownResult> HardwareController::removeChannel(AudioObjectID appID) {
  const auto* session = find(appID);
  if (session == nullptr) return std::nullopt;
  auto result = remove(session->app.objectID);
  requestPass();
  reportChanges();
  return result;
}

HardwareTeardownResult HardwareController::remove(AudioObjectID sessionID) {
  const auto found = sessions_.find(sessionID);
  auto result = teardown(*found->second);
  if (result.restored()) {
    sessions_.erase(found);
  } else {
    found->second->teardownFailure = result.failureText();
    recordTeardownFailure(result);
  }
  return result;
}

std::vector<HardwareTeardownResult> HardwareController::teardownAll() {
  assertOnExecutor();
  for (auto& [key, kept] : kept_)
    destroyStandbyTap(kept);
  kept_.clear();
  followingRetry_.reset();
  auto results = takeAllDown();
  reportChanges();
  return results;
}

std::vector<HardwareTeardownResult> HardwareController::takeAllDown() {
  std::vector<HardwareTeardownResult> results;
  for (auto session = sessions_.begin(); session != sessions_.end();) {
    results.push_back(teardown(*session->second));
    if (!results.back().restored()) session->second->teardownFailure = results.back().failureText();
    session = results.back().restored() ? sessions_.erase(session) : std::next(session);
  }
  destroyStrayTaps(results);
  const auto firstFailed = std::ranges::find_if_not(results, &HardwareTeardownResult::restored);
  if (firstFailed != results.end())
    recordTeardownFailure(*firstFailed);
  else
    restorationFailure_.reset();
  return results;
}

void HardwareController::destroyStrayTaps(std::vector<HardwareTeardownResult>& results) {
  std::erase_if(strayTaps_, [&](AudioObjectID tap) {
    TapChain chain{.tapID = tap};
    const auto failed = takeDown(environment_.hardware, chain);
    if (failed) results.push_back(resultOf(kAudioObjectUnknown, failed));
    return !failed;
  });
}

std::optional<std::string> HardwareController::restorationFailure() const {
  assertOnExecutor();
  return restorationFailure_;
}

void HardwareController::recordTeardownFailure(const HardwareTeardownResult& result) {
  restorationFailure_ =
      "Audio restoration for " + std::to_string(result.appID) + " is retrying: " + result.failureText();
  if (!teardownRetryTask_) scheduleTeardownRetry();
}

void HardwareController::scheduleTeardownRetry() {
  teardownRetryTask_ = clock_.callAfter(kTeardownRetryInterval, relay_.bind([this] { retryTeardown(); }));
}

/// Removes all sessions and rebuilds the healthy ones in the same configuration, so that their applications
/// play on unchanged.
void HardwareController::retryTeardown() {
  bool isRestored = false;
  {
    const ConfigurationScope configuration(environment_.hardware, configurationDepth_);
    std::vector<std::pair<AudioApp, Settings>> healthy;
    for (const auto& [sessionID, session] : sessions_)
      if (!session->teardownFailure) healthy.emplace_back(session->app, settingsOf(*session));
    isRestored = std::ranges::all_of(takeAllDown(), &HardwareTeardownResult::restored);
    for (auto& [app, settings] : healthy) {
      if (sessions_.contains(app.objectID)) continue; // could not be removed
      const auto& kept = kept_[stableKey(app)] = {.settings = std::move(settings)};
      startKept(app, kept.settings);
    }
  }
  requestPass();
  reportChanges();
  if (!isRestored) return scheduleTeardownRetry();
  // Posted, so that queued calls still see the retry as active.
  relay_.bind([this] { teardownRetryTask_.reset(); })();
}

} // namespace sonvel
