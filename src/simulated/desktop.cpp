#include "simulated/desktop.h"

#include <algorithm>
#include <iterator>

namespace sonvel::simulated {

SimulatedProcesses::SimulatedProcesses(std::int32_t ownProcessID)
    : ownProcessID_(ownProcessID) {}

void SimulatedProcesses::setProcess(std::int32_t pid, std::string name) {
  const std::lock_guard lock(mutex_);
  names_.insert_or_assign(pid, std::move(name));
}

std::int32_t SimulatedProcesses::ownProcessID() const {
  return ownProcessID_;
}

int SimulatedProcesses::procName(std::int32_t pid, std::span<char> name) const {
  const std::lock_guard lock(mutex_);
  const auto found = names_.find(pid);
  if (found == names_.end() || name.empty()) return 0;
  const std::size_t length = std::min(found->second.size(), name.size() - 1);
  std::copy_n(found->second.begin(), length, name.begin());
  name[length] = '\0';
  return static_cast<int>(length);
}

void SimulatedApplications::addApplication(RunningApplication application) {
  const std::lock_guard lock(mutex_);
  const auto same = [&](const RunningApplication& other) { return other.processID == application.processID; };
  std::erase_if(applications_, same);
  applications_.push_back(std::move(application));
}

std::optional<RunningApplication>
SimulatedApplications::runningApplicationWithProcessIdentifier(std::int32_t pid) const {
  const std::lock_guard lock(mutex_);
  for (const RunningApplication& application : applications_)
    if (application.processID == pid) return application;
  return std::nullopt;
}

std::vector<RunningApplication>
SimulatedApplications::runningApplicationsWithBundleIdentifier(const std::string& bundleIdentifier) const {
  const std::lock_guard lock(mutex_);
  std::vector<RunningApplication> found;
  std::copy_if(applications_.begin(), applications_.end(), std::back_inserter(found),
               [&](const RunningApplication& other) { return other.bundleIdentifier == bundleIdentifier; });
  return found;
}

} // namespace sonvel::simulated
