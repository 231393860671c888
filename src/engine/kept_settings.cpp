// Settings of applications without a session, used as soon as the application plays.

#include "audio/app_discovery.h"
#include "engine/application_processes.h"
#include "engine/hardware_controller.h"
#include "engine/tap_session.h"

#include <algorithm>

namespace sonvel {
namespace {

constexpr std::chrono::seconds kStartRetryInterval{2};

} // namespace

void HardwareController::keepSettings(const std::string& key, float gain, bool muted,
                                      std::optional<std::string> outputUID) {
  assertOnExecutor();
  startFollowing();
  if (const auto* session = findByKey(key); session != nullptr && !session->teardownFailure) return;
  Settings settings{gain, muted, std::move(outputUID)};
  if (!isWorthKeeping(key, settings)) return forgetSettings(key);
  kept_[key].settings = std::move(settings);
  requestPass();
}

void HardwareController::forgetSettings(const std::string& key) {
  assertOnExecutor();
  const auto found = kept_.find(key);
  if (found == kept_.end()) return;
  destroyStandbyTap(found->second);
  kept_.erase(found);
}

void HardwareController::holdRoute(const std::string& key, bool holds) {
  assertOnExecutor();
  if (holds)
    heldRoutes_.insert(key);
  else
    heldRoutes_.erase(key);
}

/// Whether an application with these settings is heard otherwise than without a session. The route counts
/// even if it is the default device, if the session manager may remember another one.
bool HardwareController::isWorthKeeping(const std::string& key, const Settings& settings) const {
  return settings != Settings() || (heldRoutes_.contains(key) && chosenElsewhere_.contains(key));
}

void HardwareController::startKeptApplications() {
  if (kept_.empty()) return;
  const auto apps = enumerateAudibleApps(environment_);
  std::vector<std::string> keys;
  for (const auto& [key, kept] : kept_)
    keys.push_back(key);
  for (const auto& key : keys) {
    if (findByKey(key) != nullptr) continue;
    auto& kept = kept_.at(key);
    const auto app = std::ranges::find(apps, key, stableKey);
    kept.hasFailed = kept.hasFailed && app != apps.end();
    if (kept.hasFailed && followingRetry_) continue;
    if (app != apps.end())
      startKept(*app, kept.settings);
    else if (const auto bundleIDs = processes_->bundleIDs(key); !bundleIDs.empty())
      createStandbyTap(bundleIDs, kept);
    else if (processes_->of(key).empty())
      kept_.erase(key); // a process ID may be reused by another program
  }
}

void HardwareController::startKept(const AudioApp& app, Settings settings) {
  try {
    addChannel(app, settings.gain, settings.muted, std::move(settings.outputUID));
  } catch (const HardwareError&) {
    // Already reported; will be retried.
  }
}

/// Creates a tap that no aggregate device reads. It silences the application, so that nothing is heard at the
/// wrong volume before its session starts.
void HardwareController::createStandbyTap(const std::set<std::string>& bundleIDs, Kept& kept) {
  if (kept.tap != kAudioObjectUnknown) return;
  const TapDescription description{.processes = {},
                                   .bundleIDs = {bundleIDs.begin(), bundleIDs.end()},
                                   .name = "SonvelTap-waiting",
                                   .isPrivate = true,
                                   .muteBehavior = TapMuteBehavior::muted};
  AudioObjectID tap = kAudioObjectUnknown;
  if (environment_.hardware.createProcessTap(description, tap) == kNoError) kept.tap = tap;
}

void HardwareController::destroyStandbyTap(Kept& kept) {
  const auto tap = std::exchange(kept.tap, kAudioObjectUnknown);
  if (tap == kAudioObjectUnknown || environment_.hardware.destroyProcessTap(tap) == kNoError) return;
  strayTaps_.push_back(tap);
  if (!teardownRetryTask_) scheduleTeardownRetry();
}

void HardwareController::scheduleFollowing() {
  if (followingRetry_) return;
  followingRetry_ = clock_.callAfter(kStartRetryInterval, relay_.bind([this] {
    followingRetry_.reset();
    followChanges();
  }));
}

} // namespace sonvel
