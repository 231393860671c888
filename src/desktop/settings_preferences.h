#pragma once

#include "platform/preferences.h"

#include <filesystem>

namespace sonvel::desktop {

/// Preferences in a small file of keys and values. Each call looks at the file anew.
///
/// A file that is damaged, is no regular file, has more than 1 MiB or can't be read reads as empty and stays
/// as it is until something is stored. Then it is kept beside the new one, its name followed by ".damaged",
/// in the place of one kept before. What is there already is not written again.
class SettingsPreferences final : public Preferences {
 public:
  /// On the file "sonvel/sonvel.conf" of the user's configuration folder.
  SettingsPreferences();

  /// On a file of any name, which need not exist.
  explicit SettingsPreferences(std::filesystem::path file);

  bool boolForKey(const std::string& key) const override;

  /// `key` holds none of "=", "[", "]". The file is replaced at once or not at all.
  bool setBool(bool value, const std::string& key) override;

  std::optional<std::string> stringForKey(const std::string& key) const override;

  /// As setBool. `value` is valid UTF-8 without zeros.
  bool setString(const std::string& value, const std::string& key) override;

  /// Where the file is, or will be.
  const std::filesystem::path& file() const noexcept { return file_; }

 private:
  const std::filesystem::path file_;
};

} // namespace sonvel::desktop
