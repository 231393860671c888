#include "engine/hardware_controller.h"

#include "engine/application_processes.h"
#include "engine/capture_probe.h"
#include "engine/change_listeners.h"
#include "engine/tap_session.h"

#include <algorithm>
#include <cassert>

namespace sonvel {

HardwareController::HardwareController(AudioEnvironment environment, Clock& clock,
                                       std::weak_ptr<Executor> executor)
    : environment_(std::move(environment))
    , clock_(clock)
    , executor_(executor)
    , processes_(std::make_unique<ApplicationProcesses>())
    , relay_([executor = std::move(executor)](std::function<void()> work) {
      if (const auto entrance = executor.lock()) entrance->post(std::move(work));
    }) {}

void HardwareController::assertOnExecutor() const {
#ifndef NDEBUG
  const auto executor = executor_.lock();
  assert(executor && executor->isCurrent());
#endif
}

TapSession* HardwareController::find(AudioObjectID appID) const {
  assertOnExecutor();
  if (const auto found = sessions_.find(appID); found != sessions_.end()) return found->second.get();
  for (const auto& [sessionID, session] : sessions_)
    if (std::ranges::find(session->processes, appID) != session->processes.end()) return session.get();
  // The caller may not know yet that a process has ended.
  const auto former = formerProcesses_.find(appID);
  return former != formerProcesses_.end() ? findByKey(former->second) : nullptr;
}

TapSession* HardwareController::findByKey(const std::string& key) const {
  for (const auto& [sessionID, session] : sessions_)
    if (stableKey(session->app) == key) return session.get();
  return nullptr;
}

HardwareController::Settings HardwareController::settingsOf(const TapSession& session) {
  return {session.mix->gain(), session.mix->muted(), session.outputUID};
}

} // namespace sonvel
