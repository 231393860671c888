// What the user does. The model changes and the controller is asked to follow in the same moment, so that it
// is asked in the order of the changes; nobody waits for it.

#include "audio/mixer_math.h"
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
  if (channel->active()) handOnGain(*channel);
}

void MixerViewModel::toggleMute(ChannelState* channel) {
  if (channel == nullptr) return;
  channel->setMuted(!channel->muted());
  remember(*channel);
  if (channel->active()) handOnMute(*channel);
}

void MixerViewModel::dismissChannel(ChannelState* channel) {
  if (channel == nullptr) return;
  // A view may be in the middle of something with the row that calls this.
  dependencies_.mainThread.post([row = channel->shared_from_this()] {});
  const auto objectID = channel->objectID();
  const bool wasActive = channel->active();
  rememberedSettings_.erase(channel->stableKey());
  channels_.removeRowsWithKey(channel->stableKey());
  if (wasActive) (void)hardware_.removeChannel(objectID);
}

void MixerViewModel::setOutput(const std::optional<std::string>& uid, ChannelState* channel) {
  if (channel == nullptr) return;
  channel->setOutputUID(uid);
  if (channel->active()) handOnOutput(*channel);
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
  (void)hardware_.setMasterVolume(static_cast<float>(value));
}

void MixerViewModel::resetAllVolumes() {
  const auto rows = channels_.rows();
  for (const auto& row : rows) {
    row->setGainPercent(100);
    row->setMuted(false);
    remember(*row);
    if (!row->active()) continue;
    handOnGain(*row);
    handOnMute(*row);
  }
}

void MixerViewModel::everythingToSystemOutput() {
  start([self = shared_from_this()] { return self->moveAllToSystemOutput(); });
}

void MixerViewModel::checkForUpdates() {
  if (dependencies_.updates.isAvailable()) dependencies_.updates.checkForUpdates();
}

void MixerViewModel::remember(const ChannelState& row) {
  rememberedSettings_[row.stableKey()] = {.gainPercent = row.gainPercent(), .muted = row.muted()};
}

void MixerViewModel::handOnGain(const ChannelState& row) {
  (void)hardware_.setGain(MixerMath::percentToGain(row.gainPercent()), row.objectID());
}

void MixerViewModel::handOnMute(const ChannelState& row) {
  (void)hardware_.setMuted(row.muted(), row.objectID());
}

void MixerViewModel::handOnOutput(ChannelState& row) {
  (void)moveToOutput(shared_from_this(), row.shared_from_this());
}

QCoro::Task<> MixerViewModel::moveToOutput(std::shared_ptr<MixerViewModel> model, ChannelList::Row row) {
  try {
    co_await model->hardware_.setOutput(row->outputUID(), row->objectID());
    row->setLastError(std::nullopt);
  } catch (const std::exception& error) {
    row->setLastError(error.what());
  }
}

QCoro::Task<> MixerViewModel::moveAllToSystemOutput() {
  const auto rows = channels_.rows();
  for (const auto& row : rows) {
    row->setOutputUID(std::nullopt);
    if (!row->active()) continue;
    try {
      co_await hardware_.setOutput(std::nullopt, row->objectID());
    } catch (const std::exception&) {
      continue; // the others are to follow all the same
    }
  }
}

} // namespace sonvel
