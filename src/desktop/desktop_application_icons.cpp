#include "desktop/desktop_application_icons.h"

#include "desktop/desktop_entry_file.h"

#include <memory>

namespace sonvel::desktop {
namespace {

std::optional<std::string> nameOf(GIcon& icon) {
  if (G_IS_FILE_ICON(&icon)) {
    const std::unique_ptr<char, Release<g_free>> path(
        g_file_get_path(g_file_icon_get_file(G_FILE_ICON(&icon))));
    return path ? std::optional<std::string>(path.get()) : std::nullopt;
  }
  if (!G_IS_THEMED_ICON(&icon)) return std::nullopt;
  const char* const name = g_themed_icon_get_names(G_THEMED_ICON(&icon))[0];
  return name != nullptr && *name != '\0' ? std::optional<std::string>(name) : std::nullopt;
}

} // namespace

DesktopApplicationIcons::DesktopApplicationIcons(const DesktopEntries& entries)
    : entries_(entries) {}

std::optional<std::string>
DesktopApplicationIcons::iconOfRunningApplication(const RunningApplication& application) const {
  if (!application.bundleIdentifier) return std::nullopt;
  const auto location = locationOfApplication(*application.bundleIdentifier);
  return location ? iconForFile(*location) : std::nullopt;
}

std::optional<std::string>
DesktopApplicationIcons::locationOfApplication(const std::string& bundleIdentifier) const {
  const auto entries = entries_.current();
  const auto* const entry = entries->find(bundleIdentifier);
  if (entry == nullptr) return std::nullopt;
  return entry->path;
}

std::optional<std::string> DesktopApplicationIcons::iconForFile(const std::string& path) const {
  const auto info = readDesktopEntry(path);
  if (!info) return std::nullopt;
  GIcon* const icon = g_app_info_get_icon(G_APP_INFO(info.get())); // owned by the entry
  return icon != nullptr ? nameOf(*icon) : std::nullopt;
}

std::optional<std::string> DesktopApplicationIcons::genericApplicationIcon() const {
  return "application-x-executable";
}

} // namespace sonvel::desktop
