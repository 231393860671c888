#include "engine/application_processes.h"

#include "audio/app_naming.h"
#include "audio/object_access.h"

#include <algorithm>

namespace sonvel {

std::string keyOfPID(std::int32_t pid) {
  return "pid " + std::to_string(pid);
}

std::string ApplicationProcesses::keyOf(const Process& process) {
  if (!process.bundleID) return keyOfPID(process.pid);
  return AppNaming::parentBundleID(process.bundleID).value_or(*process.bundleID);
}

ApplicationProcesses::Process ApplicationProcesses::read(AudioHardware& hardware, AudioObjectID object) {
  auto bundleID = cfStringProp(hardware, object, property::kProcessBundleID);
  if (bundleID && bundleID->empty()) bundleID.reset();
  const auto pid = scalarProp<std::int32_t>(hardware, object, property::kProcessPID, scope::kGlobal);
  return {object, pid.value_or(0), std::move(bundleID)};
}

bool ApplicationProcesses::update(AudioHardware& hardware) {
  const auto objects = readSystemObjects(hardware, property::kProcessObjectList);
  if (!objects) return false;
  std::vector<Process> processes;
  for (const auto object : *objects) {
    const auto known = std::ranges::find(processes_, object, &Process::object);
    // A program may send its identity a moment after it has appeared.
    const bool isIdentified = known != processes_.end() && known->bundleID;
    processes.push_back(isIdentified ? *known : read(hardware, object));
  }
  processes_ = std::move(processes);
  return true;
}

std::vector<AudioObjectID> ApplicationProcesses::all() const {
  std::vector<AudioObjectID> objects;
  std::ranges::transform(processes_, std::back_inserter(objects), &Process::object);
  return objects;
}

std::vector<AudioObjectID> ApplicationProcesses::of(const std::string& key) const {
  std::vector<AudioObjectID> objects;
  for (const auto& process : processes_)
    if (keyOf(process) == key) objects.push_back(process.object);
  return objects;
}

AudioApp ApplicationProcesses::appWithProcess(AudioApp app, AudioObjectID process) const {
  const auto found = std::ranges::find(processes_, process, &Process::object);
  if (found == processes_.end()) return app;
  app.objectID = process;
  app.pid = found->pid;
  app.bundleID = found->bundleID.value_or(keyOfPID(found->pid));
  app.parentBundleID = AppNaming::parentBundleID(found->bundleID);
  return app;
}

std::set<std::string> ApplicationProcesses::bundleIDs(const std::string& key) const {
  std::set<std::string> bundleIDs;
  if (!key.starts_with("pid ")) bundleIDs.insert(key);
  for (const auto& process : processes_)
    if (process.bundleID && keyOf(process) == key) bundleIDs.insert(*process.bundleID);
  return bundleIDs;
}

} // namespace sonvel
