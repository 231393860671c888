#include "simulated/application_icons.h"

#include <utility>

namespace sonvel::simulated {
namespace {

template <typename Key>
std::optional<std::string> find(const std::map<Key, std::string>& values, const Key& key) {
  const auto found = values.find(key);
  return found == values.end() ? std::nullopt : std::optional(found->second);
}

} // namespace

void SimulatedApplicationIcons::setRunningIcon(std::int32_t pid, std::string icon) {
  const std::lock_guard lock(mutex_);
  runningIcons_.insert_or_assign(pid, std::move(icon));
}

void SimulatedApplicationIcons::setLocation(std::string bundleIdentifier, std::string path) {
  const std::lock_guard lock(mutex_);
  locations_.insert_or_assign(std::move(bundleIdentifier), std::move(path));
}

void SimulatedApplicationIcons::setFileIcon(std::string path, std::string icon) {
  const std::lock_guard lock(mutex_);
  fileIcons_.insert_or_assign(std::move(path), std::move(icon));
}

void SimulatedApplicationIcons::setGenericIcon(std::optional<std::string> icon) {
  const std::lock_guard lock(mutex_);
  genericIcon_ = std::move(icon);
}

std::optional<std::string>
SimulatedApplicationIcons::iconOfRunningApplication(const RunningApplication& application) const {
  const std::lock_guard lock(mutex_);
  return find(runningIcons_, application.processID);
}

std::optional<std::string>
SimulatedApplicationIcons::locationOfApplication(const std::string& bundleIdentifier) const {
  const std::lock_guard lock(mutex_);
  return find(locations_, bundleIdentifier);
}

std::optional<std::string> SimulatedApplicationIcons::iconForFile(const std::string& path) const {
  const std::lock_guard lock(mutex_);
  return find(fileIcons_, path);
}

std::optional<std::string> SimulatedApplicationIcons::genericApplicationIcon() const {
  const std::lock_guard lock(mutex_);
  return genericIcon_;
}

} // namespace sonvel::simulated
