// Asking for the permission to capture, and following it while the program runs.

#include "model/clock_sleep.h"
#include "model/mixer_view_model.h"

#include <algorithm>

namespace sonvel {
namespace {

constexpr std::chrono::seconds kMonitorInterval{5};

QString revocationText(const std::vector<HardwareTeardownResult>& results) {
  const auto failed = std::ranges::find_if_not(results, &HardwareTeardownResult::restored);
  if (failed == results.end())
    return QStringLiteral("Audio access was revoked. Audio was restored to its normal output.");
  return QStringLiteral("Audio access was revoked. ") + QStringLiteral("Audio restoration is retrying: ") +
         QString::fromStdString(failed->failureText());
}

} // namespace

void MixerViewModel::requestPermission() {
  markOnboarded(); // whatever the answer will be, the user has acted
  setRequestingPermission(true);
  const bool isAsked = dependencies_.permission.request(
      [weakModel = weak_from_this(), &mainThread = dependencies_.mainThread](bool isGranted) {
        // On any thread, which must not come to hold the model.
        (void)startTask(mainThread, [weakModel, isGranted] { return receiveAnswer(weakModel, isGranted); });
      });
  if (!isAsked) start([self = shared_from_this()] { return self->probePermission(); });
}

QCoro::Task<> MixerViewModel::receiveAnswer(std::weak_ptr<MixerViewModel> weakModel, bool isGranted) {
  if (const auto model = weakModel.lock()) co_await model->finishRequest(isGranted);
}

QCoro::Task<> MixerViewModel::probePermission() {
  const auto couldCapture = co_await hardware_.probeCapture();
  co_await finishRequest(couldCapture.value_or(false));
}

QCoro::Task<> MixerViewModel::finishRequest(bool isGranted) {
  setPermission(isGranted ? AudioCaptureStatus::authorized : dependencies_.permission.status());
  setPermissionGranted(permission_ == AudioCaptureStatus::authorized);
  setRequestingPermission(false);
  if (!permissionGranted_) co_return;
  markOnboarded();
  co_await reconcile();
}

void MixerViewModel::ensurePermissionMonitor() {
  if (permissionMonitorTask_) return;
  permissionMonitorTask_ = startTask(
      dependencies_.mainThread, [weakModel = weak_from_this(), &clock = dependencies_.clock,
                                 &mainThread = dependencies_.mainThread](std::stop_token cancellation) {
        return monitorPermission(weakModel, clock, mainThread, std::move(cancellation));
      });
}

QCoro::Task<> MixerViewModel::monitorPermission(std::weak_ptr<MixerViewModel> weakModel, Clock& clock,
                                                Executor& mainThread, std::stop_token cancellation) {
  while (!cancellation.stop_requested()) {
    auto model = weakModel.lock();
    if (!model) co_return;
    co_await model->checkPermission();
    model.reset(); // the monitor must not keep the model over its sleep
    co_await ClockSleep(clock, mainThread, kMonitorInterval, cancellation);
  }
}

QCoro::Task<> MixerViewModel::checkPermission() {
  const auto reading = dependencies_.permission.status();
  const bool isRefused = reading == AudioCaptureStatus::denied || reading == AudioCaptureStatus::undetermined;
  if (permissionGranted_ && isRefused) {
    setPermission(reading);
    setPermissionGranted(false);
    co_await handlePermissionRevocation();
  } else if (!permissionGranted_) {
    setPermission(reading);
    setPermissionGranted(reading == AudioCaptureStatus::authorized);
    if (permissionGranted_) markOnboarded();
  }
}

QCoro::Task<> MixerViewModel::handlePermissionRevocation() {
  const auto results = co_await hardware_.teardownAll();
  audibleIDs_.clear();
  for (const auto& row : channels_.rows()) {
    row->setActive(false);
    row->setLevel(0.0F);
  }
  setStatus(revocationText(results));
}

void MixerViewModel::markOnboarded() {
  (void)dependencies_.preferences.setBool(true, firstRunKey);
  setFirstRun(false);
}

} // namespace sonvel
