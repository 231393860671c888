#include "model/permission_flow.h"

#include "engine/hardware_controller.h"
#include "model/clock_sleep.h"

namespace sonvel {
namespace {

constexpr std::chrono::seconds kMonitorInterval{5};

} // namespace

PermissionFlow::PermissionFlow(const MixerDependencies& dependencies, Consequences consequences)
    : dependencies_(dependencies)
    , consequences_(std::move(consequences))
    , isFirstRun_(!dependencies.preferences.boolForKey(firstRunKey))
    , relay_(dependencies.mainThread) {}

void PermissionFlow::refresh() {
  setStatus(dependencies_.permission.status());
  if (isGranted()) markOnboarded();
}

void PermissionFlow::request(const Self& self) {
  markOnboarded(); // the user has acted, whatever the answer
  setRequesting(true);
  const bool isAsked = dependencies_.permission.request(
      relay_.bind<bool>([this, weakSelf = std::weak_ptr(self)](bool isGranted) {
        (void)startTask(dependencies_.mainThread,
                        [self = weakSelf.lock(), isGranted] { return self->finishRequest(isGranted); });
      }));
  if (!isAsked) (void)startTask(dependencies_.mainThread, [self] { return probe(self); });
}

QCoro::Task<> PermissionFlow::probe(Self self) {
  auto reply = self->dependencies_.hardware->callForAnswer<std::optional<bool>>(
      [](HardwareController& controller, HardwareController::ProbeAnswer answer) {
        controller.probeCapture(std::move(answer));
      });
  const auto outcome =
      co_await MixerDependencies::outcomeOf(std::move(reply), self->dependencies_.mainThread);
  co_await self->finishRequest(outcome.value && outcome.value->value_or(false));
}

QCoro::Task<> PermissionFlow::finishRequest(bool isAllowed) {
  setStatus(isAllowed ? AudioCaptureStatus::authorized : dependencies_.permission.status());
  setRequesting(false);
  if (!isGranted()) co_return;
  markOnboarded();
  co_await consequences_.granted();
}

void PermissionFlow::ensureMonitor(const Self& self) {
  if (monitorTask_) return;
  monitorTask_ = startTask(dependencies_.mainThread,
                           [weakSelf = std::weak_ptr(self), &clock = dependencies_.clock,
                            &mainThread = dependencies_.mainThread](std::stop_token cancellation) {
                             return monitor(weakSelf, clock, mainThread, std::move(cancellation));
                           });
}

void PermissionFlow::cancelMonitor() {
  if (monitorTask_) monitorTask_->cancel();
}

QCoro::Task<> PermissionFlow::monitor(std::weak_ptr<PermissionFlow> weakSelf, Clock& clock,
                                      Executor& mainThread, std::stop_token cancellation) {
  while (!cancellation.stop_requested()) {
    auto self = weakSelf.lock();
    if (!self) co_return;
    co_await self->check();
    self.reset(); // the sleeping task must not keep the model alive
    co_await ClockSleep(clock, mainThread, kMonitorInterval, cancellation);
  }
}

QCoro::Task<> PermissionFlow::check() {
  const auto reading = dependencies_.permission.status();
  const bool isRefused = reading == AudioCaptureStatus::denied || reading == AudioCaptureStatus::undetermined;
  if (!isGranted()) {
    setStatus(reading);
    if (isGranted()) markOnboarded();
  } else if (isRefused) {
    setStatus(reading);
    co_await consequences_.revoked();
  }
}

void PermissionFlow::markOnboarded() {
  (void)dependencies_.preferences.setBool(true, firstRunKey);
  isFirstRun_ = false;
  Q_EMIT isFirstRunChanged();
}

void PermissionFlow::setStatus(AudioCaptureStatus status) {
  status_ = status;
  Q_EMIT statusChanged();
  Q_EMIT isGrantedChanged();
}

void PermissionFlow::setRequesting(bool isRequesting) {
  isRequesting_ = isRequesting;
  Q_EMIT isRequestingChanged();
}

} // namespace sonvel
