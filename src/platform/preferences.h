#pragma once

#include <optional>
#include <string>

namespace sonvel {

/// What this user's copies of the program remember from one run to the next. The thread that made it; may
/// read and write files; none throws.
class Preferences {
 public:
  virtual ~Preferences() = default;

  /// The value under `key`. False if there is none, or it can't be read. Reading never changes what is
  /// stored.
  virtual bool boolForKey(const std::string& key) const = 0;

  /// Stores `value` under `key`, on disk before it returns. False if it could not be stored.
  virtual bool setBool(bool value, const std::string& key) = 0;

  /// The text under `key`. None if there is none, or it can't be read. Reading never changes what is stored.
  virtual std::optional<std::string> stringForKey(const std::string& key) const = 0;

  /// Stores `value` under `key`, on disk before it returns. False if it could not be stored.
  virtual bool setString(const std::string& value, const std::string& key) = 0;
};

} // namespace sonvel
