#include "engine/application_processes.h"

#include "audio/app_naming.h"
#include "audio/object_access.h"

namespace sonvel {

std::string keyOfPID(std::int32_t pid) {
  return "pid " + std::to_string(pid);
}

bool isKeyOfPID(const std::string& key) {
  return key.starts_with("pid ");
}

std::string ApplicationProcesses::keyOf(const Process& process) {
  if (!process.bundleID) return keyOfPID(process.pid);
  return AppNaming::parentBundleID(process.bundleID).value_or(*process.bundleID);
}

ApplicationProcesses::Process ApplicationProcesses::read(AudioHardware& hardware, AudioObjectID object) {
  auto bundleID = cfStringProp(hardware, object, property::kProcessBundleID);
  if (bundleID && bundleID->empty()) bundleID.reset();
  const auto pid = scalarProp<std::int32_t>(hardware, object, property::kProcessPID, scope::kGlobal);
  return {pid.value_or(0), std::move(bundleID)};
}

bool ApplicationProcesses::update(AudioHardware& hardware) {
  const auto objects = readSystemObjects(hardware, property::kProcessObjectList);
  if (!objects) return false;
  std::map<AudioObjectID, Process> processes;
  byKey_.clear();
  for (const auto object : *objects) {
    const auto known = processes_.find(object);
    // A program may send its identity a moment after it has appeared.
    const bool isIdentified = known != processes_.end() && known->second.bundleID;
    const auto& process =
        processes.emplace(object, isIdentified ? known->second : read(hardware, object)).first->second;
    byKey_[keyOf(process)].push_back(object);
  }
  processes_ = std::move(processes);
  return true;
}

std::vector<AudioObjectID> ApplicationProcesses::all() const {
  std::vector<AudioObjectID> objects;
  for (const auto& [object, process] : processes_)
    objects.push_back(object);
  return objects;
}

const std::vector<AudioObjectID>& ApplicationProcesses::of(const std::string& key) const {
  static const std::vector<AudioObjectID> kNone;
  const auto found = byKey_.find(key);
  return found == byKey_.end() ? kNone : found->second;
}

AudioApp ApplicationProcesses::appWithProcess(AudioApp app, AudioObjectID process) const {
  const auto found = processes_.find(process);
  if (found == processes_.end()) return app;
  const auto& [pid, bundleID] = found->second;
  app.objectID = process;
  app.pid = pid;
  app.bundleID = bundleID.value_or(keyOfPID(pid));
  app.parentBundleID = AppNaming::parentBundleID(bundleID);
  return app;
}

std::set<std::string> ApplicationProcesses::bundleIDs(const std::string& key) const {
  std::set<std::string> bundleIDs;
  if (!isKeyOfPID(key)) bundleIDs.insert(key);
  for (const auto object : of(key))
    if (const auto& bundleID = processes_.at(object).bundleID) bundleIDs.insert(*bundleID);
  return bundleIDs;
}

} // namespace sonvel
