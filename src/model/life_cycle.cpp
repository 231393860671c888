// How the model comes up, what it does when the panel comes and goes, and how it ends.

#include "model/mixer_view_model.h"

namespace sonvel {
namespace {

/// As the user's language puts names in order, whatever their case.
QCollator makeNameOrder() {
  QCollator order;
  order.setCaseSensitivity(Qt::CaseInsensitive);
  return order;
}

} // namespace

MixerViewModel::MixerViewModel(MixerDependencies dependencies)
    : dependencies_(std::move(dependencies))
    , hardware_(dependencies_.hardware, dependencies_.mainThread)
    , nameOrder_(makeNameOrder())
    , isFirstRun_(!dependencies_.preferences.boolForKey(firstRunKey))
    , updatesAvailable_(dependencies_.updates.isAvailable()) {}

MixerViewModel::~MixerViewModel() {
  cancelTasks();
}

void MixerViewModel::onAppear() {
  isPanelOpen_ = true;
  ensurePermissionMonitor();
  start([self = shared_from_this()] { return self->bootstrap(); });
}

QCoro::Task<> MixerViewModel::bootstrap() {
  setPermission(dependencies_.permission.status());
  setPermissionGranted(permission_ == AudioCaptureStatus::authorized);
  if (permissionGranted_) markOnboarded();
  setOutputDevices(co_await hardware_.outputDevices());
  co_await reconcile();
  co_await refreshMaster();
  if (isPanelOpen_ && !isQuitting_) startPolling(); // it may have gone meanwhile
}

void MixerViewModel::onDisappear() {
  isPanelOpen_ = false;
  if (pollTask_) pollTask_->cancel();
  pollTask_.reset();
}

QCoro::Task<> MixerViewModel::teardownForQuit() {
  const auto self = shared_from_this();
  isQuitting_ = true;
  cancelTasks();
  (void)co_await hardware_.teardownAll();
}

void MixerViewModel::cancelTasks() {
  if (pollTask_) pollTask_->cancel();
  if (permissionMonitorTask_) permissionMonitorTask_->cancel();
}

QVariantList MixerViewModel::outputDeviceMaps() const {
  QVariantList maps;
  for (const auto& device : outputDevices_)
    maps.append(QVariantMap{{"uid", QString::fromStdString(device.uid)},
                            {"name", QString::fromStdString(device.name)}});
  return maps;
}

void MixerViewModel::setMasterVolume(double volume) {
  masterVolume_ = volume;
  Q_EMIT masterVolumeChanged();
}

void MixerViewModel::setMasterSupported(bool isSupported) {
  masterSupported_ = isSupported;
  Q_EMIT masterSupportedChanged();
}

void MixerViewModel::setOutputDevices(std::vector<AudioOutputDevice> devices) {
  outputDevices_ = std::move(devices);
  Q_EMIT outputDevicesChanged();
}

void MixerViewModel::setPermission(AudioCaptureStatus permission) {
  permission_ = permission;
  Q_EMIT permissionChanged();
}

void MixerViewModel::setPermissionGranted(bool isGranted) {
  permissionGranted_ = isGranted;
  Q_EMIT permissionGrantedChanged();
}

void MixerViewModel::setRequestingPermission(bool isRequesting) {
  isRequestingPermission_ = isRequesting;
  Q_EMIT isRequestingPermissionChanged();
}

void MixerViewModel::setFirstRun(bool isFirstRun) {
  isFirstRun_ = isFirstRun;
  Q_EMIT isFirstRunChanged();
}

void MixerViewModel::setStatus(QString status) {
  status_ = std::move(status);
  Q_EMIT statusChanged();
}

} // namespace sonvel
