#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace sonvel {

/// What is known of this program as installed. Any thread; does not block.
class BundleInformation {
 public:
  /// A value in the configuration that a build is installed with.
  using InfoObject = std::variant<std::string, bool>;

  virtual ~BundleInformation() = default;

  /// This program's own bundle identifier, if it has one.
  virtual std::optional<std::string> bundleIdentifier() const = 0;

  /// The value of `key`. None if absent, or neither a string nor a boolean.
  virtual std::optional<InfoObject> objectForInfoKey(std::string_view key) const = 0;
};

} // namespace sonvel
