#pragma once

#include <optional>
#include <string>

namespace sonvel {

/// Values that this program stores for the user between runs. Used on the thread that created it; may read
/// and write files; none throws.
class Preferences {
 public:
  virtual ~Preferences() = default;

  /// The value of `key`. False if absent or unreadable. Reading never changes what is stored.
  virtual bool boolForKey(const std::string& key) const = 0;

  /// Stores `value` under `key`; it is on disk before the call returns. False if it could not be stored.
  virtual bool setBool(bool value, const std::string& key) = 0;

  /// The string of `key`. None if absent or unreadable. Reading never changes what is stored.
  virtual std::optional<std::string> stringForKey(const std::string& key) const = 0;

  /// Stores `value` under `key`; it is on disk before the call returns. False if it could not be stored.
  virtual bool setString(const std::string& value, const std::string& key) = 0;
};

} // namespace sonvel
