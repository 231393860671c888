#include "desktop/desktop_entry_file.h"

#include "desktop/regular_file.h"

namespace sonvel::desktop {

GObjectPtr<GDesktopAppInfo> readDesktopEntry(const std::string& path) {
  constexpr std::size_t kMaximumBytes = 1024UL * 1024;
  const auto text = readRegularFile(path, kMaximumBytes);
  if (!text) return nullptr;
  const std::unique_ptr<GKeyFile, Release<g_key_file_unref>> keys(g_key_file_new());
  if (g_key_file_load_from_data(keys.get(), text->data(), text->size(), G_KEY_FILE_NONE, nullptr) == FALSE)
    return nullptr;
  return GObjectPtr<GDesktopAppInfo>(g_desktop_app_info_new_from_keyfile(keys.get()));
}

} // namespace sonvel::desktop
