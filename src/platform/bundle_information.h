#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace sonvel {

/// What is known of this program as it is installed. Any thread; does not wait.
class BundleInformation {
 public:
  /// One entry of the information that a build is installed with.
  using InfoObject = std::variant<std::string, bool>;

  virtual ~BundleInformation() = default;

  /// This program's own bundle identifier, if it has one.
  virtual std::optional<std::string> bundleIdentifier() const = 0;

  /// The value of `key`. None if there is none, or it is neither a text nor a truth value.
  virtual std::optional<InfoObject> objectForInfoKey(std::string_view key) const = 0;
};

} // namespace sonvel
