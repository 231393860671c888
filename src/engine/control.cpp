// Changing sessions that run, and asking about them.

#include "audio/mixer_math.h"
#include "engine/hardware_controller.h"

namespace sonvel {

const TapSession* HardwareController::session(AudioObjectID appID) const {
  assertOnExecutor();
  const auto found = sessions_.find(appID);
  return found == sessions_.end() ? nullptr : found->second.get();
}

void HardwareController::setGain(float gain, AudioObjectID appID) {
  if (const auto* found = session(appID)) found->mix->setGain(MixerMath::clampGain(gain));
}

void HardwareController::setMuted(bool muted, AudioObjectID appID) {
  if (const auto* found = session(appID)) found->mix->setMuted(muted);
}

void HardwareController::setOutput(std::optional<std::string> uid, AudioObjectID appID) {
  if (const auto* found = session(appID))
    addChannel(found->app, found->mix->gain(), found->mix->muted(), std::move(uid));
}

void HardwareController::rebuild(AudioObjectID appID) {
  if (const auto* found = session(appID)) setOutput(found->outputUID, appID);
}

void HardwareController::keepSettings(const std::string& key, float gain, bool muted,
                                      std::optional<std::string> outputUID) {
  assertOnExecutor();
  keptSettings_[key] = {.gain = gain, .muted = muted, .outputUID = std::move(outputUID)};
}

void HardwareController::forgetSettings(const std::string& key) {
  assertOnExecutor();
  keptSettings_.erase(key);
}

void HardwareController::onSessionChanged(SessionObserver observer) {
  assertOnExecutor();
  sessionObserver_ = std::move(observer);
  for (const auto& [appID, session] : sessions_)
    report(*session, true);
}

void HardwareController::onOutputDevicesChanged(
    std::function<void(std::vector<AudioOutputDevice>)> observer) {
  assertOnExecutor();
  devicesObserver_ = std::move(observer);
  if (devicesObserver_) devicesObserver_(outputDevices());
}

void HardwareController::report(const TapSession& session, bool exists,
                                std::optional<std::string> error) const {
  if (!sessionObserver_) return;
  SessionReport report{.key = stableKey(session.app),
                       .app = session.app,
                       .objectIDs = {},
                       .exists = exists,
                       .error = std::move(error),
                       .outputUID = session.outputUID,
                       .playingUID = std::nullopt,
                       .gain = session.mix->gain(),
                       .muted = session.mix->muted()};
  if (exists) {
    report.objectIDs = {session.app.objectID};
    report.playingUID = session.outputUID ? session.outputUID : defaultOutputDeviceUID(environment_.hardware);
  }
  sessionObserver_(std::move(report));
}

std::optional<std::string> HardwareController::outputUID(AudioObjectID appID) const {
  const auto* found = session(appID);
  return found != nullptr ? found->outputUID : std::nullopt;
}

bool HardwareController::isControlled(AudioObjectID appID) const {
  return session(appID) != nullptr;
}

std::vector<AudioObjectID> HardwareController::controlledAppIDs() const {
  assertOnExecutor();
  std::vector<AudioObjectID> appIDs;
  appIDs.reserve(sessions_.size());
  for (const auto& [appID, session] : sessions_)
    appIDs.push_back(appID);
  return appIDs;
}

std::map<AudioObjectID, float> HardwareController::peaks() const {
  assertOnExecutor();
  std::map<AudioObjectID, float> peaks;
  for (const auto& [appID, session] : sessions_)
    peaks.emplace(appID, session->metrics->inPeak());
  return peaks;
}

std::optional<ChannelMetrics> HardwareController::metrics(AudioObjectID appID) const {
  const auto* found = session(appID);
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
