
#include "audio/app_discovery.h"
#include "audio/mixer_math.h"
#include "engine/hardware_controller.h"
#include "engine/tap_session.h"

#include <algorithm>

namespace sonvel {

void HardwareController::setGain(float gain, AudioObjectID appID) {
  if (const auto* found = find(appID)) found->mix->setGain(MixerMath::clampGain(gain));
}

void HardwareController::setMuted(bool muted, AudioObjectID appID) {
  if (const auto* found = find(appID)) found->mix->setMuted(muted);
}

void HardwareController::setOutput(std::optional<std::string> uid, AudioObjectID appID) {
  const auto* found = find(appID);
  if (found == nullptr) return;
  holdRoute(stableKey(found->app), true);
  addChannel(found->app, found->mix->gain(), found->mix->muted(), std::move(uid));
}

void HardwareController::rebuild(AudioObjectID appID) {
  if (const auto* found = find(appID))
    addChannel(found->app, found->mix->gain(), found->mix->muted(), found->outputUID);
}

std::optional<std::string> HardwareController::outputUID(AudioObjectID appID) const {
  const auto* found = find(appID);
  return found != nullptr ? found->outputUID : std::nullopt;
}

bool HardwareController::isControlled(AudioObjectID appID) const {
  return find(appID) != nullptr;
}

std::vector<AudioObjectID> HardwareController::controlledAppIDs() const {
  assertOnExecutor();
  std::vector<AudioObjectID> appIDs;
  appIDs.reserve(sessions_.size());
  for (const auto& [appID, session] : sessions_)
    appIDs.push_back(appID);
  return appIDs;
}

std::vector<ProcessPeak> HardwareController::peaks() const {
  assertOnExecutor();
  std::vector<ProcessPeak> peaks;
  peaks.reserve(sessions_.size());
  for (const auto& [sessionID, session] : sessions_)
    for (const auto process : session->processes)
      peaks.emplace_back(process, session->isPlaying ? session->metrics->inPeak() : 0.0F);
  std::ranges::sort(peaks, {}, &ProcessPeak::first);
  return peaks;
}

std::optional<ChannelMetrics> HardwareController::metrics(AudioObjectID appID) const {
  const auto* found = find(appID);
  if (found == nullptr) return std::nullopt;
  const auto& metrics = *found->metrics;
  return ChannelMetrics{metrics.inPeak(), metrics.cycles(), metrics.outBufs()};
}

std::vector<AudioApp> HardwareController::audibleApps() const {
  assertOnExecutor();
  return enumerateAudibleApps(environment_);
}

std::set<AudioObjectID> HardwareController::audibleObjectIDs() const {
  std::set<AudioObjectID> objectIDs;
  for (const auto& app : audibleApps())
    objectIDs.insert(app.objectID);
  return objectIDs;
}

std::vector<AudioOutputDevice> HardwareController::outputDevices() const {
  assertOnExecutor();
  return enumerateOutputDevices(environment_.hardware);
}

std::optional<float> HardwareController::masterVolume() const {
  assertOnExecutor();
  return readMasterVolume(environment_.hardware);
}

bool HardwareController::setMasterVolume(float volume) {
  assertOnExecutor();
  return writeMasterVolume(environment_.hardware, volume);
}

} // namespace sonvel
