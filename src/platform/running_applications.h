#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sonvel {

/// An application that the user would recognise as one.
struct RunningApplication {
  std::int32_t processID = 0;
  std::optional<std::string> bundleIdentifier;
  std::optional<std::string> localizedName; ///< in the user's language

  bool operator==(const RunningApplication&) const = default;
};

/// The applications of the desktop session that run now. Any thread; may read files.
class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  /// None for a process that is no application, or has ended.
  virtual std::optional<RunningApplication>
  runningApplicationWithProcessIdentifier(std::int32_t pid) const = 0;

  /// In no order of meaning; empty if none runs.
  virtual std::vector<RunningApplication>
  runningApplicationsWithBundleIdentifier(const std::string& bundleIdentifier) const = 0;
};

} // namespace sonvel
