#include "desktop/autostart.h"

#include "desktop/glib_ptr.h"
#include "desktop/user_folders.h"

#include <glib.h>

#include <string_view>
#include <system_error>
#include <utility>

namespace sonvel::desktop {
namespace {

namespace fs = std::filesystem;
using KeyFile = std::unique_ptr<GKeyFile, Release<g_key_file_unref>>;

constexpr auto kGroup = G_KEY_FILE_DESKTOP_GROUP;

/// Quoted as in an Exec line, where four characters stay special inside quotes.
std::string quoted(const std::string& program) {
  std::string text = "\"";
  for (const char c : program) {
    if (c == '"' || c == '`' || c == '$' || c == '\\') text += '\\';
    text += c;
    if (c == '%') text += c;
  }
  return text + '"';
}

} // namespace

Autostart::Autostart(std::string program)
    : Autostart(configurationFolder() / "autostart" / "com.quellmarsh.sonvel.desktop", std::move(program)) {}

Autostart::Autostart(fs::path file, std::string program)
    : file_(std::move(file))
    , program_(std::move(program)) {}

bool Autostart::isOn() const {
  const KeyFile keys(g_key_file_new());
  if (g_key_file_load_from_file(keys.get(), file_.c_str(), G_KEY_FILE_NONE, nullptr) == FALSE) return false;
  const bool isHidden =
      g_key_file_get_boolean(keys.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_HIDDEN, nullptr) != FALSE;
  // Desktops write this key when the user switches an entry off.
  const auto* const kEnabled = "X-GNOME-Autostart-enabled";
  const bool isDisabled = g_key_file_has_key(keys.get(), kGroup, kEnabled, nullptr) != FALSE &&
                          g_key_file_get_boolean(keys.get(), kGroup, kEnabled, nullptr) == FALSE;
  return !isHidden && !isDisabled;
}

bool Autostart::set(bool isOn) const {
  std::error_code failed;
  if (!isOn) {
    fs::remove(file_, failed);
    return !failed;
  }
  fs::create_directories(file_.parent_path(), failed);
  const KeyFile keys(g_key_file_new());
  const auto command = quoted(program_) + " --background";
  for (const auto& [key, value] :
       {std::pair{G_KEY_FILE_DESKTOP_KEY_TYPE, G_KEY_FILE_DESKTOP_TYPE_APPLICATION},
        {G_KEY_FILE_DESKTOP_KEY_NAME, "Sonvel"},
        {G_KEY_FILE_DESKTOP_KEY_COMMENT, "A volume for every application that plays sound"},
        {G_KEY_FILE_DESKTOP_KEY_ICON, "com.quellmarsh.sonvel"},
        {G_KEY_FILE_DESKTOP_KEY_TRY_EXEC, program_.c_str()},
        {G_KEY_FILE_DESKTOP_KEY_EXEC, command.c_str()}})
    g_key_file_set_string(keys.get(), kGroup, key, value);
  return g_key_file_save_to_file(keys.get(), file_.c_str(), nullptr) != FALSE;
}

std::string startedProgram() {
  if (const char* image = g_getenv("APPIMAGE"); image != nullptr && *image != '\0') return image;
  std::error_code failed;
  const auto program = fs::read_symlink("/proc/self/exe", failed).string();
  constexpr std::string_view kReplaced = " (deleted)"; // an upgrade has replaced the file
  return program.ends_with(kReplaced) ? program.substr(0, program.size() - kReplaced.size()) : program;
}

} // namespace sonvel::desktop
