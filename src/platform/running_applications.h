#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sonvel {

/// A running application that the user would recognise.
struct RunningApplication {
  std::int32_t processID = 0;
  std::optional<std::string> bundleIdentifier;
  std::optional<std::string> localizedName; ///< in the user's language

  bool operator==(const RunningApplication&) const = default;
};

/// The running applications of the desktop session. Any thread; may read files.
class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  /// None if the process has ended or is no application.
  virtual std::optional<RunningApplication>
  runningApplicationWithProcessIdentifier(std::int32_t pid) const = 0;

  /// In no particular order; empty if none runs.
  virtual std::vector<RunningApplication>
  runningApplicationsWithBundleIdentifier(const std::string& bundleIdentifier) const = 0;
};

} // namespace sonvel
