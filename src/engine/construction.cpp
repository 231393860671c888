
#include "audio/mixer_math.h"
#include "audio/object_access.h"
#include "engine/application_processes.h"
#include "engine/configuration.h"
#include "engine/hardware_controller.h"
#include "engine/output_following.h"
#include "engine/render_callback.h"
#include "engine/tap_session.h"

#include <algorithm>

namespace sonvel {

void HardwareController::addChannel(AudioApp app, float gain, bool muted,
                                    std::optional<std::string> outputUID) {
  assertOnExecutor();
  startFollowing();
  auto* former = find(app.objectID);
  if (former == nullptr) former = findByKey(stableKey(app));
  std::optional<HardwareError> failure;
  {
    std::optional<ConfigurationScope> configuration;
    if (former != nullptr) configuration.emplace(environment_.hardware, configurationDepth_);
    failure = replaceSession(former, std::move(app), {gain, muted, std::move(outputUID)});
  }
  requestPass();
  reportChanges();
  if (failure) throw HardwareError(*failure);
}

std::optional<HardwareError> HardwareController::replaceSession(const TapSession* former, AudioApp app,
                                                                Settings settings) {
  const auto key = stableKey(app);
  const auto kept = kept_.find(key);
  const bool isToBeKept = former != nullptr || kept != kept_.end();
  processes_->update(environment_.hardware); // on failure the known processes are used
  auto processes = processes_->of(key);
  if (std::ranges::find(processes, app.objectID) == processes.end()) processes.push_back(app.objectID);
  const auto choice = former != nullptr ? std::optional(former->choice) : readChoice(key, processes);
  if (former == nullptr && !settings.outputUID && choice && !heldRoutes_.contains(key))
    settings.outputUID = choice->uid;
  if (former != nullptr) {
    const auto removed = remove(former->app.objectID);
    if (!removed.restored()) return HardwareError(removed.failureText(), kNoCallStatus);
  }
  const auto waiting = kept != kept_.end() ? std::exchange(kept->second.tap, kAudioObjectUnknown) : 0;
  try {
    auto session = buildSession(app, settings, waiting);
    session->choice = choice.value_or(ChoiceElsewhere());
    kept_.erase(key);
    sessions_.insert_or_assign(app.objectID, std::move(session));
    return std::nullopt;
  } catch (const HardwareError& error) {
    startFailures_[key] = {.key = key,
                           .app = std::move(app),
                           .objectIDs = {},
                           .error = error.description(),
                           .outputUID = settings.outputUID,
                           .playingUID = {},
                           .gain = settings.gain,
                           .muted = settings.muted};
    if (isToBeKept) {
      kept_[key] = {.settings = std::move(settings), .hasFailed = true};
      scheduleFollowing();
    }
    return error;
  }
}

/// Builds a session. Uses the standby tap that holds the application's streams, if there is one, so that new
/// streams are not moved twice.
std::unique_ptr<TapSession> HardwareController::buildSession(const AudioApp& app, const Settings& settings,
                                                             AudioObjectID standbyTap) {
  auto session = std::make_unique<TapSession>(app, settings.outputUID);
  session->mix->setGain(MixerMath::clampGain(settings.gain));
  session->mix->setMuted(settings.muted);
  session->tapID = standbyTap;
  try {
    if (standbyTap == kAudioObjectUnknown) createTap(*session);
    createAggregateDevice(*session);
    // The block shares the mix and the metrics, so that a session may go while the audio system has the
    // block.
    installIOProc(environment_.hardware, *session, ioQueue_, makeRenderBlock(session->mix, session->metrics));
    startDevice(environment_.hardware, *session);
  } catch (const HardwareError&) {
    // The error of the failed step is reported, not that of the cleanup; a cleanup that fails here cannot be
    // retried.
    (void)teardown(*session);
    throw;
  }
  if (standbyTap != kAudioObjectUnknown) {
    session->processes.clear(); // a standby tap has none
    followProcesses(*session, processes_->of(stableKey(app)));
  }
  return session;
}

void HardwareController::createTap(TapSession& session) {
  const auto bundleIDs = processes_->bundleIDs(stableKey(session.app));
  const TapDescription description{.processes = {session.app.objectID},
                                   .bundleIDs = {bundleIDs.begin(), bundleIDs.end()},
                                   .name = "SonvelTap-" + std::to_string(session.app.pid),
                                   .isPrivate = true,
                                   .muteBehavior = TapMuteBehavior::muted};
  AudioObjectID tap = kAudioObjectUnknown;
  const auto status = environment_.hardware.createProcessTap(description, tap);
  if (status != kNoError || tap == kAudioObjectUnknown) throw HardwareError("CreateProcessTap", status);
  session.tapID = tap;
  followProcesses(session, processes_->of(stableKey(session.app)));
}

void HardwareController::createAggregateDevice(TapSession& session) {
  auto& hardware = environment_.hardware;
  const auto tapUID = cfStringProp(hardware, session.tapID, property::kTapUID);
  if (!tapUID) throw HardwareError("tap UID", kNoCallStatus);
  const auto outputUID = session.outputUID ? session.outputUID : defaultOutputDeviceUID(hardware);
  if (!outputUID) throw HardwareError("output device", kNoCallStatus);

  auto status = tryAggregateDevice(session, *outputUID, *tapUID);
  if (session.aggID == kAudioObjectUnknown && session.outputUID) {
    // While the wanted device is not connected, the default device replaces it.
    const auto outputs = readOutputSituation(hardware);
    if (outputs && outputs->defaultUID && !outputs->isConnected(*session.outputUID))
      status = tryAggregateDevice(session, *outputs->defaultUID, *tapUID);
  }
  if (session.aggID == kAudioObjectUnknown) throw HardwareError("CreateAggregateDevice", status);
}

OSStatus HardwareController::tryAggregateDevice(TapSession& session, const std::string& outputUID,
                                                const std::string& tapUID) {
  const auto status = sonvel::createAggregateDevice(
      environment_.hardware, session, "SonvelAgg-" + std::to_string(session.app.pid), outputUID, tapUID);
  if (session.aggID != kAudioObjectUnknown) session.playingUID = outputUID;
  return status;
}

} // namespace sonvel
