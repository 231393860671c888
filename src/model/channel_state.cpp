#include "model/channel_state.h"

#include <algorithm>

namespace sonvel {

namespace {

QVariant toVariant(const std::optional<std::string>& text) {
  return text ? QVariant(QString::fromStdString(*text)) : QVariant();
}

} // namespace

ChannelState::ChannelState(AudioApp app, int gainPercent, bool muted, std::optional<std::string> outputUID)
    : stableKey_(sonvel::stableKey(app))
    , app_(std::move(app))
    , name_(QString::fromStdString(app_.name))
    , gainPercent_(gainPercent)
    , muted_(muted)
    , outputUID_(std::move(outputUID)) {}

void ChannelState::setApp(AudioApp app) {
  app_ = std::move(app);
  name_ = QString::fromStdString(app_.name);
  Q_EMIT appChanged();
}

void ChannelState::setGainPercent(int percent) {
  gainPercent_ = percent;
  Q_EMIT gainPercentChanged();
}

void ChannelState::setMuted(bool muted) {
  muted_ = muted;
  Q_EMIT mutedChanged();
}

void ChannelState::setLevel(float level) {
  level_ = level;
  Q_EMIT levelChanged();
}

void ChannelState::setActive(bool active) {
  active_ = active;
  Q_EMIT activeChanged();
}

void ChannelState::setPlaying(bool isPlaying) {
  isPlaying_ = isPlaying;
  Q_EMIT isPlayingChanged();
}

void ChannelState::setOutputUID(std::optional<std::string> uid) {
  outputUID_ = std::move(uid);
  Q_EMIT outputUIDChanged();
}

void ChannelState::setLastError(std::optional<CallFailure> error) {
  lastError_ = std::move(error);
  Q_EMIT lastErrorChanged();
}

void ChannelState::setPlayback(Playback playback) {
  playback_ = std::move(playback);
  Q_EMIT playbackChanged();
}

std::span<const AudioObjectID> ChannelState::processes() const noexcept {
  if (playback_.processes.empty()) return {&app_.objectID, 1};
  return playback_.processes;
}

AudioObjectID ChannelState::sessionID() const {
  const auto controlled = processes();
  return std::ranges::find(controlled, objectID()) != controlled.end() ? objectID() : controlled.front();
}

void ChannelState::setZeroStreak(int polls) {
  zeroStreak_ = polls;
  Q_EMIT zeroStreakChanged();
}

void ChannelState::setIdleTicks(int reconciliations) {
  idleTicks_ = reconciliations;
  Q_EMIT idleTicksChanged();
}

QVariant ChannelState::outputUIDText() const {
  return toVariant(outputUID_);
}

QVariant ChannelState::playingUIDText() const {
  return toVariant(playback_.playingUID);
}

QVariant ChannelState::lastErrorText() const {
  return lastError_ ? toVariant(lastError_->text) : QVariant();
}

} // namespace sonvel
