// How rows follow their sessions, and which settings the controller keeps for rows without one.

#include "audio/mixer_math.h"
#include "engine/hardware_controller.h"
#include "model/mixer_view_model.h"

#include <algorithm>
#include <cmath>

namespace sonvel {
namespace {

int toPercent(float gain) {
  return static_cast<int>(std::lround(gain * 100.0F));
}

} // namespace

MixerViewModel::ChannelSettings::ChannelSettings(const ChannelState& row)
    : gainPercent(row.gainPercent())
    , muted(row.muted())
    , outputUID(row.outputUID()) {}

MixerViewModel::ChannelSettings::ChannelSettings(const SessionReport& report)
    : gainPercent(toPercent(report.gain))
    , muted(report.muted)
    , outputUID(report.outputUID) {}

void MixerViewModel::followSession(const SessionReport& report, SessionReports::Age age) {
  const auto row = channels_.rowWithKey(report.key);
  if (!row) return; // if the application plays, the next reconciliation creates it
  const bool hasBegunOrEnded = row->active() != report.exists;
  if (hasBegunOrEnded) {
    row->setActive(report.exists);
    row->setZeroStreak(0);
    if (!report.exists) row->setLevel(0.0F);
  }
  const bool couldNotBeEnded = report.exists && report.error;
  if (report.exists) followProcess(*row, report);
  // A session that could not be removed does not have the user's settings and need not be playing.
  if (report.exists && !couldNotBeEnded) followSettings(*row, report, age);
  const ChannelState::Playback playback{report.objectIDs, report.playingUID, report.isOutputConnected,
                                        report.isPartial};
  if (row->playback() != playback) row->setPlayback(playback);
  if (!age.hasWaited || couldNotBeEnded) followError(*row, report);
  if (!hasBegunOrEnded) return;
  if (couldNotBeEnded)
    sendLevel(*row, ChannelSettings(report)); // it may still be heard
  else if (age.hasWaited || !row->isPlaying())
    catchUp(*row, ChannelSettings(report));
  else if (!report.exists && !isFollowed())
    keep(*row); // reconciliation does not restart paused rows
}

void MixerViewModel::followProcess(ChannelState& row, const SessionReport& report) {
  const auto& processes = report.objectIDs;
  if (!processes.empty() && std::ranges::find(processes, row.objectID()) == processes.end())
    row.setApp(report.app);
}

void MixerViewModel::followSettings(ChannelState& row, const SessionReport& report, SessionReports::Age age) {
  if (!age.isRouteOld && row.outputUID() != report.outputUID) row.setOutputUID(report.outputUID);
  if (!age.hasWaited) {
    if (MixerMath::clampGain(MixerMath::percentToGain(row.gainPercent())) != report.gain)
      row.setGainPercent(toPercent(report.gain));
    if (row.muted() != report.muted) row.setMuted(report.muted);
    if (rememberedSettings_.contains(row.stableKey())) remember(row);
  }
  if (row.isPlaying()) return;
  revive(row);
  sortRows();
  setStatus(rowCounts());
}

void MixerViewModel::followError(ChannelState& row, const SessionReport& report) {
  const auto& shown = row.lastError();
  const bool isTheSame = shown ? shown->text == report.error : !report.error;
  if (isTheSame) return; // keep the present error, which may have a status; reports have none
  row.setLastError(report.error ? std::optional(CallFailure{.text = *report.error}) : std::nullopt);
}

void MixerViewModel::revive(ChannelState& row) {
  if (row.idleTicks() != 0) row.setIdleTicks(0);
  if (!row.isPlaying()) row.setPlaying(true);
}

/// Sends the changes that the user made in the row while its session was starting or ending with `known`.
void MixerViewModel::catchUp(ChannelState& row, const ChannelSettings& known) {
  if (!channels_.contains(row)) return;
  if (!row.active()) {
    if (ChannelSettings(row) != known) keep(row);
    return;
  }
  dependencies_.tell([key = row.stableKey()](HardwareController& controller) {
    controller.forgetSettings(key); // those kept before its session
  });
  sendLevel(row, known);
  if (row.outputUID() != known.outputUID) (void)sendOutput(shared_from_this(), row.shared_from_this());
}

void MixerViewModel::sendLevel(const ChannelState& row, const ChannelSettings& known) {
  if (row.gainPercent() != known.gainPercent) sendGain(row);
  if (row.muted() != known.muted) sendMute(row);
}

/// Makes the controller start a session with the row's settings as soon as the application plays. Keeps
/// nothing while sessions must not be started.
MixerViewModel::Call MixerViewModel::keeping(const ChannelState& row) const {
  const auto& key = row.stableKey();
  const bool mayStart = permissionGranted() && !isQuitting_;
  return [key, mayStart, settings = ChannelSettings(row)](HardwareController& controller) {
    if (!mayStart) return controller.forgetSettings(key);
    controller.keepSettings(key, MixerMath::percentToGain(settings.gainPercent), settings.muted,
                            settings.outputUID);
  };
}

void MixerViewModel::keep(const ChannelState& row, bool choosesRoute) {
  if (!row.active()) (void)send(shared_from_this(), row.stableKey(), keeping(row), choosesRoute);
}

void MixerViewModel::keepRows() {
  for (const auto& row : channels_.rows())
    keep(*row);
}

void MixerViewModel::keepPausedRows() {
  for (const auto& row : channels_.rows())
    if (!row->isPlaying()) keep(*row);
}

} // namespace sonvel
