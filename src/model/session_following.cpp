// How rows follow their sessions, and what the controller is told of rows that have none.

#include "audio/mixer_math.h"
#include "engine/hardware_controller.h"
#include "model/mixer_view_model.h"

#include <algorithm>
#include <cmath>

namespace sonvel {

void MixerViewModel::followSession(const SessionReport& report, SessionReports::Age age) {
  const auto row = channels_.rowWithKey(report.key);
  if (!row) return; // the next reconciliation makes it, if the application plays
  if (report.exists) {
    followProcess(*row, report);
    if (!age.isRouteOld && row->outputUID() != report.outputUID) row->setOutputUID(report.outputUID);
    if (!age.hasWaited) followSettings(*row, report);
    if (!row->isPlaying()) revive(*row); // the controller has taken it over because it plays
  }
  if (row->active() != report.exists) {
    row->setActive(report.exists);
    row->setZeroStreak(0);
    if (!report.exists) row->setLevel(0.0F);
  }
  const ChannelState::Playback playback{report.objectIDs, report.playingUID, report.isOutputConnected,
                                        report.isPartial};
  if (row->playback() != playback) row->setPlayback(playback);
  if (age.hasWaited) return;
  const auto& shown = row->lastError();
  if (report.error && (!shown || shown->text != *report.error))
    row->setLastError(CallFailure{.text = *report.error});
  else if (report.exists && !report.error && shown)
    row->setLastError(std::nullopt);
}

void MixerViewModel::followProcess(ChannelState& row, const SessionReport& report) {
  const auto& processes = report.objectIDs;
  if (!processes.empty() && std::ranges::find(processes, row.objectID()) == processes.end())
    row.setApp(report.app);
}

void MixerViewModel::followSettings(ChannelState& row, const SessionReport& report) {
  if (MixerMath::clampGain(MixerMath::percentToGain(row.gainPercent())) != report.gain)
    row.setGainPercent(static_cast<int>(std::lround(report.gain * 100.0F)));
  if (row.muted() != report.muted) row.setMuted(report.muted);
  if (rememberedSettings_.contains(row.stableKey())) remember(row);
}

void MixerViewModel::revive(ChannelState& row) {
  row.setIdleTicks(0);
  if (!row.isPlaying()) tellToForget(row.stableKey()); // from now on its session has the settings
  row.setPlaying(true);
}

/// Lets the controller take a paused row's application over as soon as it plays, with the row's settings. A
/// row that changes nothing, and every row while sessions must not be started, is left alone.
void MixerViewModel::keepIfPaused(const ChannelState& row) const {
  if (row.isPlaying()) return;
  const bool changesNothing = row.gainPercent() == 100 && !row.muted() && !row.outputUID();
  if (changesNothing || !permissionGranted() || isQuitting_) return tellToForget(row.stableKey());
  dependencies_.tell(
      [key = row.stableKey(), settings = ChannelSettings(row)](HardwareController& controller) {
        controller.keepSettings(key, MixerMath::percentToGain(settings.gainPercent), settings.muted,
                                settings.outputUID);
      });
}

void MixerViewModel::keepPausedRows() const {
  for (const auto& row : channels_.rows())
    keepIfPaused(*row);
}

void MixerViewModel::tellToForget(const std::string& key) const {
  dependencies_.tell([key](HardwareController& controller) { controller.forgetSettings(key); });
}

} // namespace sonvel
