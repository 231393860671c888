#include "desktop/settings_preferences.h"

#include "desktop/glib_ptr.h"
#include "desktop/regular_file.h"
#include "desktop/user_folders.h"

#include <glib.h>

#include <functional>
#include <string_view>
#include <system_error>
#include <utility>

namespace sonvel::desktop {

namespace {

namespace fs = std::filesystem;

constexpr auto kGroup = "Preferences";
constexpr int kForTheUserAlone = 0600;

using Text = std::unique_ptr<char, Release<g_free>>;
using KeyFile = std::unique_ptr<GKeyFile, Release<g_key_file_unref>>;

enum class Condition { sound, missing, damaged };

Condition load(GKeyFile* keys, const fs::path& file) {
  constexpr std::size_t kMaximumBytes = 1024UL * 1024;
  std::error_code error;
  if (fs::status(file, error).type() == fs::file_type::not_found) return Condition::missing;
  const auto text = readRegularFile(file, kMaximumBytes);
  // After a power failure the file may contain zeros, which the parser takes for the end of a line.
  const bool isSound =
      text && g_utf8_validate_len(text->data(), text->size(), nullptr) != FALSE &&
      g_key_file_load_from_data(keys, text->data(), text->size(), G_KEY_FILE_KEEP_COMMENTS, nullptr) != FALSE;
  return isSound ? Condition::sound : Condition::damaged;
}

/// A hard link works even if the file is unreadable.
void keepDamaged(const fs::path& file) {
  const fs::path kept = file.string() + ".damaged";
  std::error_code error;
  fs::remove(kept, error);
  fs::create_hard_link(file, kept, error);
  if (error) fs::copy_file(file, kept, error);
}

/// Stores a changed copy in the file's place.
bool store(const fs::path& file, const std::function<void(GKeyFile*)>& change) {
  std::error_code error;
  const fs::path link = fs::weakly_canonical(file, error); // a symbolic link to the file is kept
  const fs::path target = error ? file : link;
  KeyFile keys(g_key_file_new());
  const Condition condition = load(keys.get(), target);
  if (condition == Condition::damaged) {
    keepDamaged(target);
    keys.reset(g_key_file_new());
  }
  gsize sizeBytes = 0;
  const Text before(g_key_file_to_data(keys.get(), &sizeBytes, nullptr));
  change(keys.get());
  const Text text(g_key_file_to_data(keys.get(), &sizeBytes, nullptr));
  // Storing waits for the disk, and equal values are stored often.
  if (condition == Condition::sound && g_strcmp0(before.get(), text.get()) == 0) return true;
  fs::create_directories(target.parent_path(), error);
  const auto replaceOnDisk =
      static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT | G_FILE_SET_CONTENTS_DURABLE);
  return text && g_file_set_contents_full(target.c_str(), text.get(), static_cast<gssize>(sizeBytes),
                                          replaceOnDisk, kForTheUserAlone, nullptr) != FALSE;
}

} // namespace

SettingsPreferences::SettingsPreferences()
    : SettingsPreferences(configurationFolder() / "sonvel" / "sonvel.conf") {}

SettingsPreferences::SettingsPreferences(fs::path file)
    : file_(std::move(file)) {}

bool SettingsPreferences::boolForKey(const std::string& key) const {
  const KeyFile keys(g_key_file_new());
  if (load(keys.get(), file_) != Condition::sound) return false;
  const Text value(g_key_file_get_value(keys.get(), kGroup, key.c_str(), nullptr));
  return value && std::string_view(value.get()) == "true"; // other values are damage
}

bool SettingsPreferences::setBool(bool value, const std::string& key) {
  return store(file_, [&](GKeyFile* keys) {
    g_key_file_set_boolean(keys, kGroup, key.c_str(), value ? TRUE : FALSE);
  });
}

std::optional<std::string> SettingsPreferences::stringForKey(const std::string& key) const {
  const KeyFile keys(g_key_file_new());
  if (load(keys.get(), file_) != Condition::sound) return std::nullopt;
  const Text value(g_key_file_get_string(keys.get(), kGroup, key.c_str(), nullptr));
  return value ? std::optional<std::string>(value.get()) : std::nullopt;
}

bool SettingsPreferences::setString(const std::string& value, const std::string& key) {
  return store(file_,
               [&](GKeyFile* keys) { g_key_file_set_string(keys, kGroup, key.c_str(), value.c_str()); });
}

} // namespace sonvel::desktop
