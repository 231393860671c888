// What the user does: the model changes at once, the hardware follows in a task of its own.

#include "engine/mixer_math.h"
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
  if (wasActive)
    start([self = shared_from_this(), objectID] { return self->hardware_.removeChannel(objectID); });
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
  start([self = shared_from_this(), volume = static_cast<float>(value)] {
    return self->hardware_.setMasterVolume(volume);
  });
}

void MixerViewModel::resetAllVolumes() {
  const auto rows = channels_.rows();
  for (const auto& row : rows) {
    row->setGainPercent(100);
    row->setMuted(false);
    remember(*row);
    if (row->active())
      start([self = shared_from_this(), objectID = row->objectID()] { return self->resetChannel(objectID); });
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
  start([self = shared_from_this(), gain = MixerMath::percentToGain(row.gainPercent()),
         objectID = row.objectID()] { return self->hardware_.setGain(gain, objectID); });
}

void MixerViewModel::handOnMute(const ChannelState& row) {
  start([self = shared_from_this(), muted = row.muted(), objectID = row.objectID()] {
    return self->hardware_.setMuted(muted, objectID);
  });
}

void MixerViewModel::handOnOutput(ChannelState& row) {
  start([self = shared_from_this(), held = row.shared_from_this(), uid = row.outputUID(),
         objectID = row.objectID()] { return self->moveToOutput(held, uid, objectID); });
}

QCoro::Task<> MixerViewModel::moveToOutput(ChannelList::Row row, std::optional<std::string> uid,
                                           AudioObjectID objectID) {
  try {
    co_await hardware_.setOutput(std::move(uid), objectID);
    row->setLastError(std::nullopt);
  } catch (const std::exception& error) {
    row->setLastError(error.what());
  }
}

QCoro::Task<> MixerViewModel::resetChannel(AudioObjectID objectID) {
  co_await hardware_.setGain(1.0F, objectID);
  co_await hardware_.setMuted(false, objectID);
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
