#pragma once

#include "platform/preferences.h"

#include <filesystem>

namespace sonvel::desktop {

/// Preferences in a small key file. Each call reads the file anew.
///
/// A file that is damaged, not regular, larger than 1 MiB or unreadable reads as empty and is left alone
/// until something is stored. Then it is kept with ".damaged" appended to its name, replacing an earlier one.
/// Equal values are not written again.
class SettingsPreferences final : public Preferences {
 public:
  /// Uses "sonvel/sonvel.conf" in the user's configuration folder.
  SettingsPreferences();

  /// Uses this file, which need not exist.
  explicit SettingsPreferences(std::filesystem::path file);

  bool boolForKey(const std::string& key) const override;

  /// `key` must not contain "=", "[" or "]". The file is replaced atomically.
  bool setBool(bool value, const std::string& key) override;

  std::optional<std::string> stringForKey(const std::string& key) const override;

  /// As setBool. `value` must be valid UTF-8 without NUL.
  bool setString(const std::string& value, const std::string& key) override;

  /// The file's path; it may not exist yet.
  const std::filesystem::path& file() const noexcept { return file_; }

 private:
  const std::filesystem::path file_;
};

} // namespace sonvel::desktop
