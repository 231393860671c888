#include "desktop/user_folders.h"

#include <glib.h>

namespace sonvel::desktop {
namespace {

/// GLib's functions cache the values of their first call in this process.
std::filesystem::path fromEnvironment(const char* name) {
  const char* folder = g_getenv(name);
  return folder != nullptr && std::filesystem::path(folder).is_absolute() ? folder : std::filesystem::path();
}

} // namespace

std::filesystem::path configurationFolder() {
  const auto folder = fromEnvironment("XDG_CONFIG_HOME");
  return folder.empty() ? std::filesystem::path(g_get_home_dir()) / ".config" : folder;
}

std::filesystem::path runtimeFolder() {
  return fromEnvironment("XDG_RUNTIME_DIR");
}

} // namespace sonvel::desktop
