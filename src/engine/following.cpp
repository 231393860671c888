// Keeps sessions in line with the audio system: processes, devices, the default device and routes chosen
// elsewhere. Each pass reads everything anew, so it need not know which changes caused it.

#include "audio/object_access.h"
#include "engine/application_processes.h"
#include "engine/change_listeners.h"
#include "engine/hardware_controller.h"
#include "engine/output_following.h"
#include "engine/tap_session.h"

#include <algorithm>

namespace sonvel {
namespace {

constexpr std::size_t kMostFormerProcesses = 256;

} // namespace

void HardwareController::startFollowing() {
  if (listeners_) return;
  auto follow = relay_.bind([this] { followChanges(); });
  const auto onChange = [noted = noted_, follow](std::uint32_t selector) {
    if (selector == property::kProcessObjectList) noted->hasProcessListChanged = true;
    if (!noted->isPassDue.exchange(true)) follow();
  };
  listeners_ = std::make_unique<ChangeListeners>(environment_.hardware, onChange);
  requestPass();
}

void HardwareController::requestPass() {
  if (listeners_ && !noted_->isPassDue.exchange(true)) relay_.bind([this] { followChanges(); })();
}

void HardwareController::followChanges() {
  assertOnExecutor();
  noted_->isPassDue = false;
  const bool hasProcessListChanged = noted_->hasProcessListChanged.exchange(false);
  auto& hardware = environment_.hardware;
  const auto outputs = readOutputSituation(hardware);
  if (!outputs || !processes_->update(hardware)) {
    listeners_->forgetObjects();
    (void)listen();
    return; // no audio system: sessions stay unchanged until it is back
  }
  if (hasProcessListChanged) listeners_->forgetObjects();
  reportDevices(outputs->devices);
  followSessions(*outputs);
  startKeptApplications();
  forgetGoneProcesses();
  if (listen()) requestPass(); // new objects may have changed before we listened to them
  reportChanges();
}

/// Ends early when a new pass is due, for example after each rebuild, so that calls of the user need not wait
/// for all of them. The next pass begins with the sessions that this one has not reached.
void HardwareController::followSessions(const OutputSituation& outputs) {
  auto sessionIDs = controlledAppIDs(); // in ascending order
  std::ranges::rotate(sessionIDs, std::ranges::upper_bound(sessionIDs, lastFollowed_));
  for (const auto sessionID : sessionIDs) {
    lastFollowed_ = sessionID;
    followSession(sessionID, outputs);
    if (noted_->isPassDue) break;
  }
}

void HardwareController::followSession(AudioObjectID sessionID, const OutputSituation& outputs) {
  const auto found = sessions_.find(sessionID);
  if (found == sessions_.end() || found->second->teardownFailure) return;
  auto* session = found->second.get();
  const auto processes = processes_->of(stableKey(session->app));
  if (processes.empty()) return outlive(*session);
  if (processes != session->processes) noteFormerProcesses(*session);
  if (std::ranges::find(processes, sessionID) == processes.end()) {
    auto entry = sessions_.extract(sessionID);
    session->app = processes_->appWithProcess(session->app, processes.front());
    entry.key() = session->app.objectID;
    sessions_.insert(std::move(entry));
  }
  followProcesses(*session, processes);
  followChoice(*session);
  auto& hardware = environment_.hardware;
  // A process with an unreadable state counts as playing, so that a failed call does not clear its meter.
  session->isPlaying = std::ranges::any_of(processes, [&](AudioObjectID process) {
    return scalarProp<std::uint32_t>(hardware, process, property::kProcessIsRunningOutput, scope::kGlobal) !=
           0U;
  });
  session->isPartial =
      scalarProp<std::uint32_t>(hardware, session->tapID, property::kTapIsPartial, scope::kGlobal) == 1U;
  const auto wanted = outputs.deviceFor(session->outputUID);
  if (!wanted || *wanted == session->playingUID) return;
  try {
    rebuild(session->app.objectID);
  } catch (const HardwareError&) {
    // Already reported; will be retried.
  }
}

/// Gives the tap the application's current processes.
void HardwareController::followProcesses(TapSession& session, const std::vector<AudioObjectID>& processes) {
  if (processes == session.processes) return;
  if (std::ranges::find(processes, session.app.objectID) == processes.end()) return;
  const auto status = environment_.hardware.setPropertyData(
      session.tapID, {property::kTapProcessList, scope::kGlobal}, std::as_bytes(std::span(processes)));
  if (status == kNoError) session.processes = processes; // otherwise one of them has just ended
}

/// The last choice for any of the application's processes. None if that can't be read. Also notes a
/// device, which the session manager may remember.
std::optional<ChoiceElsewhere> HardwareController::readChoice(const std::string& key,
                                                              const std::vector<AudioObjectID>& processes) {
  auto& hardware = environment_.hardware;
  std::optional<ChoiceElsewhere> last;
  for (const auto process : processes) {
    const auto device =
        scalarProp<AudioObjectID>(hardware, process, property::kProcessChosenDevice, scope::kGlobal);
    const auto serial =
        scalarProp<std::uint32_t>(hardware, process, property::kProcessChoiceSerial, scope::kGlobal);
    if (!device || !serial) continue;
    ChoiceElsewhere choice{.serial = *serial};
    if (*device != kAudioObjectUnknown) choice.uid = cfStringProp(hardware, *device, property::kDeviceUID);
    if (!last || choice.serial > last->serial || (last->serial == 0 && !last->uid)) last = std::move(choice);
  }
  if (last && last->uid) chosenElsewhere_.insert(key);
  // A choice of "follow" may have gone with its stream, and an older one of another stream be read instead,
  // or the device that the session manager remembers for another one.
  if (const auto follow = followChosen_.find(key);
      last && follow != followChosen_.end() && last->serial < follow->second)
    return ChoiceElsewhere{.serial = follow->second};
  return last;
}

/// A choice that is made elsewhere becomes the session's route, also one of the device that was chosen
/// before. Without a new choice there may be another device to read, because a stream has ended or a device
/// has gone; what counts of that is only a device that the session manager has remembered for a new stream,
/// and only until the first choice, here or elsewhere.
void HardwareController::followChoice(TapSession& session) {
  const auto key = stableKey(session.app);
  auto choice = readChoice(key, session.processes);
  if (!choice) return;
  const bool isNew = choice->serial > session.choice.serial;
  const bool wasChosen = session.choice.uid || session.choice.serial > 0 || heldRoutes_.contains(key);
  const bool isRemembered = choice->serial == 0 && choice->uid && !wasChosen;
  if (!isNew && !isRemembered) return;
  holdRoute(key, false);
  if (!choice->uid) {
    chosenElsewhere_.erase(key); // the session manager then forgets the device
    followChosen_[key] = choice->serial;
  }
  session.outputUID = choice->uid;
  session.choice = *std::move(choice);
}

void HardwareController::noteFormerProcesses(const TapSession& session) {
  for (const auto process : session.processes)
    formerProcesses_[process] = stableKey(session.app);
}

/// Former processes are needed only until callers know that they have ended, so the oldest may go even if
/// their application remains. An application without a name of its own ends with its process, whose ID may
/// be another program's later.
void HardwareController::forgetGoneProcesses() {
  std::erase_if(formerProcesses_, [this](const auto& former) {
    return findByKey(former.second) == nullptr && !kept_.contains(former.second);
  });
  while (formerProcesses_.size() > kMostFormerProcesses)
    formerProcesses_.erase(formerProcesses_.begin()); // IDs ascend
  const auto isGone = [this](const std::string& key) {
    return isKeyOfPID(key) && processes_->of(key).empty();
  };
  std::erase_if(heldRoutes_, isGone);
  std::erase_if(chosenElsewhere_, isGone);
  std::erase_if(followChosen_, [&](const auto& chosen) { return isGone(chosen.first); });
}

/// Ends the session of an application whose last process has ended, and keeps its settings for the next one.
void HardwareController::outlive(const TapSession& session) {
  const auto key = stableKey(session.app);
  noteFormerProcesses(session);
  if (auto settings = settingsOf(session); isWorthKeeping(key, settings) && !isKeyOfPID(key))
    kept_[key] = {.settings = std::move(settings)};
  (void)remove(session.app.objectID);
}

bool HardwareController::listen() {
  std::set<ChangeListeners::Property> properties{{kSystemObject, property::kProcessObjectList},
                                                 {kSystemObject, property::kDevices},
                                                 {kSystemObject, property::kDefaultOutputDevice}};
  for (const auto& [sessionID, session] : sessions_) {
    properties.emplace(session->tapID, property::kTapIsPartial);
    for (const auto process : session->processes) {
      properties.emplace(process, property::kProcessChosenDevice);
      properties.emplace(process, property::kProcessChoiceSerial);
      properties.emplace(process, property::kProcessIsRunningOutput);
    }
  }
  if (!kept_.empty())
    for (const auto process : processes_->all())
      properties.emplace(process, property::kProcessIsRunningOutput);
  return listeners_->listenTo(properties);
}

} // namespace sonvel
