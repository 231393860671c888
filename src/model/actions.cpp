// What the user does. Each action asks the controller at once, so that it is asked in the order of the
// actions; none waits for it.

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
  // The view that calls this may go on to use the row.
  dependencies_.mainThread.post([row = channel->shared_from_this()] {});
  const auto objectID = channel->objectID();
  const bool wasActive = channel->active();
  rememberedSettings_.erase(channel->stableKey());
  channels_.removeRowsWithKey(channel->stableKey());
  if (wasActive) sendRemoval(objectID);
}

void MixerViewModel::setOutput(const std::optional<std::string>& uid, ChannelState* channel) {
  if (channel == nullptr) return;
  channel->setOutputUID(uid);
  if (channel->active()) (void)sendOutput(shared_from_this(), channel->shared_from_this());
}

void MixerViewModel::setOutput(const QVariant& uid, ChannelState* channel) {
  setOutput(toOptionalText(uid), channel);
}

QString MixerViewModel::outputName(const std::optional<std::string>& uid) const {
  if (!uid) return QStringLiteral("System Output");
  const auto device = std::ranges::find(outputDevices_, *uid, &AudioOutputDevice::uid);
  return device != outputDevices_.end() ? QString::fromStdString(device->name) : QStringLiteral("Device");
}

QString MixerViewModel::outputName(const QVariant& uid) const {
  return outputName(toOptionalText(uid));
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
}

void MixerViewModel::sendGain(const ChannelState& row) const {
  dependencies_.tell([gain = MixerMath::percentToGain(row.gainPercent()), objectID = row.objectID()](
                         HardwareController& controller) { controller.setGain(gain, objectID); });
}

void MixerViewModel::sendMute(const ChannelState& row) const {
  dependencies_.tell([muted = row.muted(), objectID = row.objectID()](HardwareController& controller) {
    controller.setMuted(muted, objectID);
  });
}

void MixerViewModel::sendRemoval(AudioObjectID objectID) const {
  dependencies_.tell([objectID](HardwareController& controller) { controller.removeChannel(objectID); });
}

QCoro::Task<> MixerViewModel::sendOutput(std::shared_ptr<MixerViewModel> model, ChannelList::Row row) {
  auto move =
      model->dependencies_.ask([uid = row->outputUID(), objectID = row->objectID()](
                                   HardwareController& controller) { controller.setOutput(uid, objectID); });
  const auto moved = co_await std::move(move);
  row->setLastError(moved.failure);
}

QCoro::Task<> MixerViewModel::moveAllToSystemOutput() {
  const auto rows = channels_.rows();
  for (const auto& row : rows) {
    row->setOutputUID(std::nullopt);
    if (!row->active()) continue;
    (void)co_await dependencies_.ask([objectID = row->objectID()](HardwareController& controller) {
      controller.setOutput(std::nullopt, objectID);
    });
  }
}

} // namespace sonvel
