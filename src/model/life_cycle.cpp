// Start and end of the model, and its reactions to the panel and the permission.

#include "engine/hardware_controller.h"
#include "model/mixer_view_model.h"

#include <algorithm>
#include <cmath>

namespace sonvel {
namespace {

/// Smaller differences are the device's rounding of the value that the user set.
constexpr double kMasterVolumeTolerance = 0.02;

MixerStatus afterRevocation(const CallOutcome<std::vector<HardwareTeardownResult>>& outcome) {
  using enum MixerStatus::Event;
  if (outcome.failure) return {.event = restorationFails, .failures = outcome.failure->text};
  const auto failed = std::ranges::find_if_not(*outcome.value, &HardwareTeardownResult::restored);
  if (failed == outcome.value->end()) return {.event = permissionRevoked};
  return {.event = restorationFails, .failures = failed->failureText()};
}

/// Orders names by the user's locale, ignoring case.
QCollator makeNameOrder() {
  QCollator order;
  order.setCaseSensitivity(Qt::CaseInsensitive);
  return order;
}

} // namespace

MixerViewModel::MixerViewModel(MixerDependencies dependencies)
    : dependencies_(std::move(dependencies))
    , nameOrder_(makeNameOrder())
    , updatesAvailable_(dependencies_.updates.isAvailable())
    , permission_(dependencies_, {.granted = [this] { return reconcile(); },
                                  .revoked = [this] { return handlePermissionRevocation(); }})
    , polling_(dependencies_, channels_, audibleIDs_,
               {.refreshMaster = [this] { return refreshMaster(); },
                .reconcile = [this] { return reconcile(); },
                .rebuild = [this](ChannelList::Row row) { return rebuild(std::move(row)); }})
    , reports_(
          dependencies_,
          [this](const SessionReport& report, SessionReports::Age age) { followSession(report, age); },
          [this](std::vector<AudioOutputDevice> devices) { setOutputDevices(std::move(devices)); },
          [this](const std::optional<std::string>& failure) {
            restorationFailure_ = QString::fromStdString(failure.value_or(""));
            Q_EMIT restorationFailureChanged();
          }) {
  connect(&permission_, &PermissionFlow::statusChanged, this, &MixerViewModel::permissionChanged);
  connect(&permission_, &PermissionFlow::isGrantedChanged, this, &MixerViewModel::permissionGrantedChanged);
  connect(&permission_, &PermissionFlow::isRequestingChanged, this,
          &MixerViewModel::isRequestingPermissionChanged);
  connect(&permission_, &PermissionFlow::isGrantedChanged, this, [this] {
    if (std::exchange(wasGranted_, permissionGranted()) != permissionGranted()) keepPausedRows();
  });
  connect(&permission_, &PermissionFlow::isFirstRunChanged, this, &MixerViewModel::isFirstRunChanged);
}

MixerViewModel::~MixerViewModel() {
  cancelTasks();
}

void MixerViewModel::onAppear() {
  isPanelOpen_ = true;
  startFollowing();
  (void)startTask(dependencies_.mainThread, [self = shared_from_this()] { return self->bootstrap(); });
}

void MixerViewModel::startFollowing() {
  reports_.start();
  permission_.ensureMonitor({shared_from_this(), &permission_});
}

QCoro::Task<> MixerViewModel::refresh() {
  if (isQuitting_) co_return;
  startFollowing();
  co_await bringUpToDate();
  if (!isFollowed()) keepRows(); // as in stopPolling
}

QCoro::Task<> MixerViewModel::bringUpToDate() {
  permission_.refresh();
  const auto devices = co_await dependencies_.ask(&HardwareController::outputDevices);
  if (devices.value) setOutputDevices(*devices.value);
  co_await reconcile();
  co_await refreshMaster();
}

QCoro::Task<> MixerViewModel::bootstrap() {
  co_await bringUpToDate();
  // The panel may have been closed in the meantime.
  if (isFollowed()) polling_.start({shared_from_this(), &polling_});
}

void MixerViewModel::onDisappear() {
  isPanelOpen_ = false;
  if (!isFollowed()) stopPolling();
}

void MixerViewModel::setWatched(bool isWatched) {
  const bool wasFollowed = isFollowed();
  isWatched_ = isWatched;
  if (isFollowed() == wasFollowed) return;
  if (wasFollowed)
    stopPolling();
  else
    polling_.start({shared_from_this(), &polling_});
}

void MixerViewModel::stopPolling() {
  polling_.cancel();
  keepRows(); // from now on no reconciliation retries failed starts
}

QCoro::Task<> MixerViewModel::teardownForQuit() {
  const auto self = shared_from_this();
  isQuitting_ = true;
  cancelTasks();
  keepRows(); // while quitting, this removes the kept settings
  (void)co_await dependencies_.ask(&HardwareController::teardownAll);
}

void MixerViewModel::cancelTasks() {
  polling_.cancel();
  permission_.cancelMonitor();
}

void MixerViewModel::requestPermission() {
  permission_.request({shared_from_this(), &permission_});
}

QCoro::Task<> MixerViewModel::handlePermissionRevocation() {
  const auto outcome = co_await dependencies_.ask(&HardwareController::teardownAll);
  audibleIDs_.clear();
  for (const auto& row : channels_.rows()) {
    row->setActive(false);
    row->setLevel(0.0F);
  }
  setStatus(afterRevocation(outcome));
}

/// Does not show failures. If the row has lost its session, the next reconciliation restarts it and shows
/// errors. If it stays silent, it is rebuilt after twelve more silent polls.
QCoro::Task<> MixerViewModel::rebuild(ChannelList::Row row) {
  const SessionReports::Hold hold(reports_, row->stableKey());
  (void)co_await dependencies_.ask(
      [objectID = row->sessionID()](HardwareController& controller) { controller.rebuild(objectID); });
}

QCoro::Task<> MixerViewModel::refreshMaster() {
  const auto volume = co_await dependencies_.ask(&HardwareController::masterVolume);
  if (!volume.value) co_return;
  setMasterSupported(volume.value->has_value());
  if (volume.value->has_value() && std::abs(double{**volume.value} - masterVolume_) > kMasterVolumeTolerance)
    setMasterVolume(**volume.value);
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
  for (const auto& device : outputDevices_)
    deviceNames_[device.uid] = device.name;
  Q_EMIT outputDevicesChanged();
}

void MixerViewModel::setStatus(MixerStatus status) {
  status_ = std::move(status);
  Q_EMIT statusChanged();
}

} // namespace sonvel
