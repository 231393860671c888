
#include "engine/hardware_controller.h"
#include "engine/tap_session.h"

namespace sonvel {

void HardwareController::onSessionChanged(SessionObserver observer) {
  assertOnExecutor();
  startFollowing();
  sessionObserver_ = std::move(observer);
  reported_.clear();
  startFailures_.clear();
  reportChanges();
}

void HardwareController::onOutputDevicesChanged(
    std::function<void(std::vector<AudioOutputDevice>)> observer) {
  assertOnExecutor();
  startFollowing();
  devicesObserver_ = std::move(observer);
  reportedDevices_.reset();
  reportDevices(outputDevices());
}

void HardwareController::onRestorationFailureChanged(
    std::function<void(std::optional<std::string>)> observer) {
  assertOnExecutor();
  restorationObserver_ = std::move(observer);
  reportedRestorationFailure_ = restorationFailure_;
  if (restorationObserver_) restorationObserver_(restorationFailure_);
}

SessionReport HardwareController::reportOf(const TapSession& session) {
  return {.key = stableKey(session.app),
          .app = session.app,
          .objectIDs = session.processes,
          .exists = true,
          .error = session.teardownFailure,
          .outputUID = session.outputUID,
          .playingUID = session.playingUID,
          .isOutputConnected = !session.outputUID || *session.outputUID == session.playingUID,
          .isPartial = session.isPartial,
          .gain = session.mix->gain(),
          .muted = session.mix->muted()};
}

/// Reports the differences from the last report. Does nothing inside a configuration, where a session that
/// ends may start again.
void HardwareController::reportChanges() {
  if (configurationDepth_ > 0) return;
  reportRestorationFailure();
  auto failures = std::exchange(startFailures_, {});
  if (!sessionObserver_) return;
  auto former = std::exchange(reported_, {});
  for (const auto& [sessionID, session] : sessions_) {
    auto report = reportOf(*session);
    const auto last = former.extract(report.key);
    if (!last || last.mapped() != report) sessionObserver_(report);
    failures.erase(report.key);
    reported_.emplace(report.key, std::move(report));
  }
  for (auto& [key, report] : failures) {
    former.erase(key);
    sessionObserver_(std::move(report));
  }
  for (auto& [key, report] : former) {
    report.objectIDs.clear();
    report.exists = false;
    report.error.reset();
    report.playingUID.reset();
    report.isOutputConnected = true;
    report.isPartial = false;
    sessionObserver_(std::move(report));
  }
}

void HardwareController::reportRestorationFailure() {
  if (!restorationObserver_ || reportedRestorationFailure_ == restorationFailure_) return;
  reportedRestorationFailure_ = restorationFailure_;
  restorationObserver_(restorationFailure_);
}

void HardwareController::reportDevices(const std::vector<AudioOutputDevice>& devices) {
  if (!devicesObserver_ || reportedDevices_ == devices) return;
  reportedDevices_ = devices;
  devicesObserver_(devices);
}

} // namespace sonvel
