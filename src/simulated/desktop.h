#pragma once

#include "platform/bundle_information.h"
#include "platform/process_information.h"
#include "platform/running_applications.h"

#include <map>
#include <mutex>

namespace sonvel::simulated {

/// Scripted processes. Any thread.
class SimulatedProcesses final : public ProcessInformation {
 public:
  explicit SimulatedProcesses(std::int32_t ownProcessID = 1);

  void setProcess(std::int32_t pid, std::string name);

  std::int32_t ownProcessID() const override;
  int procName(std::int32_t pid, std::span<char> name) const override;

 private:
  const std::int32_t ownProcessID_;
  mutable std::mutex mutex_;
  std::map<std::int32_t, std::string> names_;
};

/// Scripted applications, in the order of adding. Any thread.
class SimulatedApplications final : public RunningApplications {
 public:
  /// Replaces an application with the same pid.
  void addApplication(RunningApplication application);

  std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) const override;
  std::vector<RunningApplication>
  runningApplicationsWithBundleIdentifier(const std::string& bundleIdentifier) const override;

 private:
  mutable std::mutex mutex_;
  std::vector<RunningApplication> applications_;
};

/// A bundle with given identifier and information.
class SimulatedBundle final : public BundleInformation {
 public:
  using Information = std::map<std::string, InfoObject, std::less<>>;

  explicit SimulatedBundle(std::optional<std::string> identifier, Information information = {})
      : identifier_(std::move(identifier))
      , information_(std::move(information)) {}

  std::optional<std::string> bundleIdentifier() const override { return identifier_; }

  std::optional<InfoObject> objectForInfoKey(std::string_view key) const override {
    const auto found = information_.find(key);
    if (found == information_.end()) return std::nullopt;
    return found->second;
  }

 private:
  const std::optional<std::string> identifier_;
  const Information information_;
};

} // namespace sonvel::simulated
