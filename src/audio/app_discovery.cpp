#include "audio/app_discovery.h"

#include "audio/app_naming.h"
#include "audio/object_access.h"
#include "text/display_name.h"

#include <array>

namespace sonvel {
namespace {

/// None if no visible character is left.
std::optional<std::string> shownName(const std::optional<std::string>& name) {
  auto shown = displayName(name.value_or(""));
  return shown.empty() ? std::nullopt : std::optional(std::move(shown));
}

/// The name of the application that a process belongs to; for a helper process, its parent application.
std::optional<std::string> localizedNameOf(const RunningApplications& applications,
                                           const std::optional<std::string>& parentBundleID,
                                           const std::optional<RunningApplication>& runningApp) {
  if (parentBundleID) {
    const auto parents = applications.runningApplicationsWithBundleIdentifier(*parentBundleID);
    if (!parents.empty() && parents.front().localizedName) return parents.front().localizedName;
  }
  return runningApp ? runningApp->localizedName : std::nullopt;
}

std::optional<AudioApp> audibleApp(const AudioEnvironment& environment, AudioObjectID object) {
  auto& hardware = environment.hardware;
  const auto isRunningOutput =
      scalarProp<std::uint32_t>(hardware, object, property::kProcessIsRunningOutput, scope::kGlobal);
  if (isRunningOutput.value_or(0) == 0) return std::nullopt;

  const auto pid =
      scalarProp<std::int32_t>(hardware, object, property::kProcessPID, scope::kGlobal).value_or(0);
  if (pid == environment.ownProcessID) return std::nullopt;
  const auto bundleID = cfStringProp(hardware, object, property::kProcessBundleID);
  if (bundleID && bundleID == environment.ownBundleID) return std::nullopt;

  const auto runningApp = environment.applications.runningApplicationWithProcessIdentifier(pid);
  const auto executable = executableName(environment.processes, pid);
  if (AppNaming::isSystemAudioProcess(executable, bundleID, runningApp.has_value())) return std::nullopt;

  const bool hasBundleID = bundleID && !bundleID->empty();
  const auto parent = AppNaming::parentBundleID(bundleID);
  const auto processName = shownName(runningApp ? runningApp->localizedName : std::nullopt);
  const auto localizedName = shownName(localizedNameOf(environment.applications, parent, runningApp));
  const auto name = shownName(AppNaming::friendlyName(bundleID, processName, localizedName));
  return AudioApp{.objectID = object,
                  .pid = pid,
                  .bundleID = hasBundleID ? *bundleID : "pid " + std::to_string(pid),
                  .name = name.value_or("Unknown App"),
                  .parentBundleID = parent,
                  .isPlayingOutput = true};
}

} // namespace

std::vector<AudioApp> enumerateAudibleApps(const AudioEnvironment& environment) {
  std::vector<AudioApp> apps;
  for (const auto object : processObjectList(environment.hardware)) {
    if (auto app = audibleApp(environment, object)) apps.push_back(*std::move(app));
  }
  return apps;
}

std::optional<std::string> executableName(const ProcessInformation& processes, std::int32_t pid) {
  std::array<char, 1024> name{};
  if (processes.procName(pid, name) < 1) return std::nullopt;
  return std::string(name.data());
}

} // namespace sonvel
