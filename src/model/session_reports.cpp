#include "model/session_reports.h"

#include "engine/hardware_controller.h"

#include <algorithm>

namespace sonvel {

SessionReports::Hold::Hold(SessionReports& reports, std::string key, bool choosesRoute)
    : reports_(reports)
    , key_(std::move(key))
    , choosesRoute_(choosesRoute) {
  auto& entry = reports_.entries_[key_];
  ++entry.holds;
  if (!choosesRoute) return;
  ++entry.routeHolds;
  entry.isRouteOld = true;
}

SessionReports::Hold::~Hold() {
  auto& entry = reports_.entries_.at(key_);
  if (choosesRoute_) --entry.routeHolds;
  if (--entry.holds > 0 || !std::exchange(entry.isWaiting, false)) return;
  reports_.follow_(SessionReport(entry.report), {.hasWaited = true, .isRouteOld = entry.isRouteOld});
}

SessionReports::SessionReports(const MixerDependencies& dependencies, Follow follow,
                               FollowDevices followDevices, FollowRestoration followRestoration)
    : dependencies_(dependencies)
    , follow_(std::move(follow))
    , followDevices_(std::move(followDevices))
    , followRestoration_(std::move(followRestoration))
    , relay_(dependencies.mainThread) {}

void SessionReports::start() {
  if (std::exchange(isStarted_, true)) return;
  auto onSession = relay_.bind<SessionReport>([this](SessionReport report) { take(std::move(report)); });
  auto onDevices = relay_.bind<std::vector<AudioOutputDevice>>(
      [this](std::vector<AudioOutputDevice> devices) { followDevices_(std::move(devices)); });
  auto onRestoration = relay_.bind<std::optional<std::string>>(
      [this](std::optional<std::string> failure) { followRestoration_(std::move(failure)); });
  dependencies_.tell([onSession = std::move(onSession), onDevices = std::move(onDevices),
                      onRestoration = std::move(onRestoration)](HardwareController& controller) {
    controller.onSessionChanged(onSession);
    controller.onOutputDevicesChanged(onDevices);
    controller.onRestorationFailureChanged(onRestoration);
  });
}

const SessionReport* SessionReports::session(const std::string& key) const {
  const auto found = entries_.find(key);
  if (found == entries_.end() || found->second.holds > 0) return nullptr;
  return found->second.report.exists ? &found->second.report : nullptr;
}

bool SessionReports::isOneSession(const std::string& key,
                                  std::initializer_list<AudioObjectID> processes) const {
  const auto found = entries_.find(key);
  if (found == entries_.end() || !found->second.report.exists) return false;
  const auto& controlled = found->second.report.objectIDs;
  return std::ranges::all_of(processes, [&](AudioObjectID process) {
    return std::ranges::find(controlled, process) != controlled.end();
  });
}

void SessionReports::forgetSession(const std::string& key) {
  if (const auto found = entries_.find(key); found != entries_.end()) found->second.report.exists = false;
}

void SessionReports::take(SessionReport report) {
  auto& entry = entries_[report.key];
  entry.report = std::move(report);
  entry.isWaiting = entry.holds > 0;
  entry.isRouteOld = entry.routeHolds > 0;
  if (!entry.isWaiting) follow_(SessionReport(entry.report), {});
}

} // namespace sonvel
