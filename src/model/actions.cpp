// User actions. Each calls the controller at once, without waiting, so that calls keep the order of the
// actions.

#include "audio/mixer_math.h"
#include "engine/hardware_controller.h"
#include "model/mixer_view_model.h"

#include <algorithm>

namespace sonvel {
namespace {

std::optional<std::string> toOptionalText(const QVariant& value) {
  return value.isNull() ? std::nullopt : std::optional(value.toString().toStdString());
}

} // namespace

void MixerViewModel::setGain(int percent, ChannelState* channel) {
  if (channel == nullptr) return;
  channel->setGainPercent(percent);
  remember(*channel);
  if (channel->active()) sendGain(*channel);
}

void MixerViewModel::toggleMute(ChannelState* channel) {
  if (channel == nullptr) return;
  channel->setMuted(!channel->muted());
  remember(*channel);
  if (channel->active()) sendMute(*channel);
}

void MixerViewModel::dismissChannel(ChannelState* channel) {
  if (channel == nullptr) return;
  // Keeps the row alive until the event loop runs: the calling view may still use it.
  dependencies_.mainThread.post([row = channel->shared_from_this()] {});
  const auto objectID = channel->sessionID();
  const bool wasActive = channel->active();
  const auto& key = channel->stableKey();
  rememberedSettings_.erase(key);
  channels_.removeRowWithKey(key);
  reports_.forgetSession(key);
  dependencies_.tell([key](HardwareController& controller) { controller.holdRoute(key, false); });
  if (wasActive) return sendRemoval(key, objectID);
  dependencies_.tell([key](HardwareController& controller) { controller.forgetSettings(key); });
}

void MixerViewModel::setOutput(const std::optional<std::string>& uid, ChannelState* channel) {
  if (channel == nullptr) return;
  chooseRoute(*channel, uid);
  if (channel->active()) (void)sendOutput(shared_from_this(), channel->shared_from_this());
}

/// Without telling a session. The row may have none, or one that has just ended.
void MixerViewModel::chooseRoute(ChannelState& row, const std::optional<std::string>& uid) {
  row.setOutputUID(uid);
  dependencies_.tell(
      [key = row.stableKey()](HardwareController& controller) { controller.holdRoute(key, true); });
  keep(row, true);
}

void MixerViewModel::setOutput(const QVariant& uid, ChannelState* channel) {
  setOutput(toOptionalText(uid), channel);
}

QString MixerViewModel::outputName(const std::optional<std::string>& uid) const {
  if (!uid) return tr("System Output");
  const auto device = std::ranges::find(outputDevices_, *uid, &AudioOutputDevice::uid);
  return device != outputDevices_.end() ? QString::fromStdString(device->name) : tr("Device");
}

QString MixerViewModel::outputName(const QVariant& uid) const {
  return outputName(toOptionalText(uid));
}

QString MixerViewModel::knownDeviceName(const QVariant& uid) const {
  const auto text = toOptionalText(uid);
  if (!text) return {};
  const auto found = deviceNames_.find(*text);
  return found != deviceNames_.end() ? QString::fromStdString(found->second) : tr("The chosen device");
}

void MixerViewModel::setMaster(double value) {
  setMasterVolume(value);
  dependencies_.tell([volume = static_cast<float>(value)](HardwareController& controller) {
    controller.setMasterVolume(volume);
  });
}

void MixerViewModel::resetAllVolumes() {
  const auto rows = channels_.rows();
  for (const auto& row : rows) {
    row->setGainPercent(100);
    row->setMuted(false);
    remember(*row);
    if (!row->active()) continue;
    sendGain(*row);
    sendMute(*row);
  }
}

void MixerViewModel::everythingToSystemOutput() {
  (void)startTask(dependencies_.mainThread,
                  [self = shared_from_this()] { return self->moveAllToSystemOutput(); });
}

void MixerViewModel::checkForUpdates() {
  if (dependencies_.updates.isAvailable()) dependencies_.updates.checkForUpdates();
}

void MixerViewModel::remember(const ChannelState& row) {
  rememberedSettings_[row.stableKey()] = {.gainPercent = row.gainPercent(), .muted = row.muted()};
  keep(row);
}

/// Makes the controller run `call`; reports of that key wait until it has ended.
QCoro::Task<> MixerViewModel::send(std::shared_ptr<MixerViewModel> model, std::string key, Call call,
                                   bool choosesRoute) {
  const SessionReports::Hold hold(model->reports_, std::move(key), choosesRoute);
  auto done = model->dependencies_.ask(std::move(call));
  (void)co_await std::move(done);
}

void MixerViewModel::sendGain(const ChannelState& row) {
  const auto gain = MixerMath::percentToGain(row.gainPercent());
  (void)send(shared_from_this(), row.stableKey(),
             [gain, objectID = row.sessionID()](HardwareController& c) { c.setGain(gain, objectID); });
}

void MixerViewModel::sendMute(const ChannelState& row) {
  (void)send(shared_from_this(), row.stableKey(),
             [muted = row.muted(), objectID = row.sessionID()](HardwareController& c) {
               c.setMuted(muted, objectID);
             });
}

/// Removes the session, or the kept settings if the session has ended.
void MixerViewModel::sendRemoval(const std::string& key, AudioObjectID objectID) {
  (void)send(shared_from_this(), key, [key, objectID](HardwareController& controller) {
    controller.removeChannel(objectID);
    controller.forgetSettings(key);
  });
}

QCoro::Task<> MixerViewModel::sendOutput(std::shared_ptr<MixerViewModel> model, ChannelList::Row row) {
  const SessionReports::Hold hold(model->reports_, row->stableKey(), true);
  auto move =
      model->dependencies_.ask([uid = row->outputUID(), objectID = row->sessionID()](
                                   HardwareController& controller) { controller.setOutput(uid, objectID); });
  const auto moved = co_await std::move(move);
  row->setLastError(moved.failure);
}

QCoro::Task<> MixerViewModel::moveAllToSystemOutput() {
  const auto rows = channels_.rows();
  for (const auto& row : rows) {
    chooseRoute(*row, std::nullopt);
    if (!row->active()) continue;
    const SessionReports::Hold hold(reports_, row->stableKey(), true);
    (void)co_await dependencies_.ask([objectID = row->sessionID()](HardwareController& controller) {
      controller.setOutput(std::nullopt, objectID);
    });
  }
}

} // namespace sonvel
