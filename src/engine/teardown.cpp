// Taking sessions down, which is what gives an application its own output back, until it has succeeded.

#include "engine/hardware_controller.h"

#include <algorithm>
#include <cassert>

namespace sonvel {
namespace {

constexpr std::chrono::seconds kTeardownRetryInterval{2};

HardwareTeardownResult failed(const TapSession& session, const std::string& step, OSStatus status) {
  return {.appID = session.app.objectID, .failures = {step + " (OSStatus " + std::to_string(status) + ")"}};
}

} // namespace

// Clears each handle only when its object is gone, so that the next attempt resumes at the step that failed.
HardwareTeardownResult HardwareController::teardown(TapSession& session) {
  auto& hardware = environment_.hardware;
  if (session.ioProc && session.aggID != kAudioObjectUnknown) {
    const auto stop = hardware.deviceStop(session.aggID, *session.ioProc);
    if (stop != kNoError) return failed(session, "AudioDeviceStop", stop);
    const auto destroy = hardware.destroyIOProcID(session.aggID, *session.ioProc);
    if (destroy != kNoError) return failed(session, "AudioDeviceDestroyIOProcID", destroy);
    session.ioProc.reset();
  }
  if (session.aggID != kAudioObjectUnknown) {
    const auto destroy = hardware.destroyAggregateDevice(session.aggID);
    if (destroy != kNoError) return failed(session, "AudioHardwareDestroyAggregateDevice", destroy);
    session.aggID = kAudioObjectUnknown;
  }
  if (session.tapID != kAudioObjectUnknown) {
    const auto destroy = hardware.destroyProcessTap(session.tapID);
    if (destroy != kNoError) return failed(session, "AudioHardwareDestroyProcessTap", destroy);
    session.tapID = kAudioObjectUnknown;
  }
  return {.appID = session.app.objectID, .failures = {}};
}

std::optional<HardwareTeardownResult> HardwareController::removeChannel(AudioObjectID appID) {
  assertOnExecutor();
  const auto found = sessions_.find(appID);
  if (found == sessions_.end()) return std::nullopt;
  auto result = teardown(*found->second);
  if (result.restored()) {
    report(*found->second, false);
    sessions_.erase(found);
  } else {
    recordTeardownFailure(result);
  }
  return result;
}

std::vector<HardwareTeardownResult> HardwareController::teardownAll() {
  assertOnExecutor();
  std::vector<HardwareTeardownResult> results;
  for (auto session = sessions_.begin(); session != sessions_.end();) {
    results.push_back(teardown(*session->second));
    if (results.back().restored()) report(*session->second, false);
    session = results.back().restored() ? sessions_.erase(session) : std::next(session);
  }
  const auto firstFailed = std::ranges::find_if_not(results, &HardwareTeardownResult::restored);
  if (firstFailed != results.end())
    recordTeardownFailure(*firstFailed);
  else
    restorationFailure_.reset();
  return results;
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
  assert(!weak_from_this().expired());
  teardownRetryTask_ =
      clock_.callAfter(kTeardownRetryInterval, [self = weak_from_this(), executor = executor_] {
        const auto entrance = executor.lock();
        if (!entrance) return;
        entrance->post([self] {
          if (const auto controller = self.lock()) controller->retryTeardown();
        });
      });
}

void HardwareController::retryTeardown() {
  if (!std::ranges::all_of(teardownAll(), &HardwareTeardownResult::restored)) return scheduleTeardownRetry();
  // In turn with the calls that wait already: to them the retrying still goes on.
  if (const auto executor = executor_.lock()) {
    executor->post([self = weak_from_this()] {
      if (const auto controller = self.lock()) controller->finishTeardownRetry();
    });
  }
}

void HardwareController::finishTeardownRetry() {
  teardownRetryTask_.reset();
}

} // namespace sonvel
