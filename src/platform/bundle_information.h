#pragma once

#include <optional>
#include <string>

namespace sonvel {

/// What is known of this program as it is installed. Any thread; does not wait.
class BundleInformation {
 public:
  virtual ~BundleInformation() = default;

  /// This program's own bundle identifier, if it has one.
  virtual std::optional<std::string> bundleIdentifier() const = 0;
};

} // namespace sonvel
