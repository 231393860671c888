#include "desktop/desktop_entries.h"

#include "desktop/desktop_entry_file.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <optional>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <unordered_set>
#include <utility>

namespace sonvel::desktop {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

/// Modification times of folders have the resolution of the kernel's tick. A second change within this time
/// may not be visible.
constexpr auto kTimeResolution = 20ms;

std::chrono::nanoseconds changeTime(const std::string& folder) {
  struct stat status {};

  if (stat(folder.c_str(), &status) != 0) return 0ns;
  return std::chrono::seconds(status.st_mtim.tv_sec) + std::chrono::nanoseconds(status.st_mtim.tv_nsec);
}

std::string textOrEmpty(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

bool isTerminalEmulator(GDesktopAppInfo& info) {
  std::istringstream categories(textOrEmpty(g_desktop_app_info_get_categories(&info)));
  for (std::string category; std::getline(categories, category, ';');)
    if (category == "TerminalEmulator") return true;
  return false;
}

/// None if GIO does not accept the file as an application that can be started here.
std::optional<DesktopEntry> readEntry(const std::string& path, std::string id,
                                      const std::vector<std::string>& programFolders) {
  const auto info = readDesktopEntry(path);
  if (!info || g_desktop_app_info_get_is_hidden(info.get()) != FALSE) return std::nullopt;

  GAppInfo* const app = G_APP_INFO(info.get());
  return DesktopEntry{
      .id = std::move(id),
      .name = textOrEmpty(g_app_info_get_name(app)),
      .path = path,
      .launch = parseLaunchCommand(textOrEmpty(g_app_info_get_commandline(app)), programFolders),
      .isShown = g_desktop_app_info_get_nodisplay(info.get()) == FALSE,
      .isTerminalEmulator = isTerminalEmulator(*info),
  };
}

/// The ID of "kde/player.desktop" in the applications folder is "kde-player".
std::string entryID(const std::string& relativePath) {
  auto id = relativePath.substr(0, relativePath.size() - std::string_view(".desktop").size());
  std::ranges::replace(id, '/', '-');
  return id;
}

/// Reads the folders in order. A file hides later files with the same ID, even if it is no application
/// itself.
class Reader {
 public:
  using FolderFound = std::function<void(const std::string& folder)>;

  /// `found` is called for each folder before it is read.
  Reader(const std::vector<std::string>& programFolders, FolderFound found)
      : programFolders_(programFolders)
      , found_(std::move(found)) {}

  void read(const std::string& folder) {
    found_(folder);
    std::error_code ignored;
    std::vector<std::string> files;
    for (fs::recursive_directory_iterator item(folder, ignored), end; item != end; item.increment(ignored)) {
      if (item->is_directory(ignored))
        found_(item->path().string());
      else if (item->path().extension() == ".desktop")
        files.push_back(item->path().string());
    }
    std::ranges::sort(files);
    for (const auto& file : files)
      readFile(file, entryID(file.substr(folder.size() + 1)));
  }

  std::vector<DesktopEntry> takeEntries() { return std::move(entries_); }

 private:
  void readFile(const std::string& path, const std::string& id) {
    if (!seen_.insert(id).second) return;
    if (auto entry = readEntry(path, id, programFolders_)) entries_.push_back(std::move(*entry));
  }

  const std::vector<std::string>& programFolders_;
  FolderFound found_;
  std::unordered_set<std::string> seen_;
  std::vector<DesktopEntry> entries_;
};

} // namespace

DesktopFolders DesktopFolders::standard() {
  DesktopFolders folders;
  folders.applications.push_back(textOrEmpty(g_get_user_data_dir()) + "/applications");
  for (const char* const* folder = g_get_system_data_dirs(); *folder != nullptr; ++folder)
    folders.applications.push_back((fs::path(*folder) / "applications").string());

  std::istringstream path(textOrEmpty(g_getenv("PATH")));
  for (std::string folder; std::getline(path, folder, ':');)
    if (folder.starts_with('/')) folders.programs.push_back(folder);
  return folders;
}

InstalledDesktopEntries::InstalledDesktopEntries(DesktopFolders folders)
    : folders_(std::move(folders)) {}

std::shared_ptr<const DesktopEntryTable> InstalledDesktopEntries::current() const {
  const std::lock_guard lock(mutex_);
  if (!table_ || !isSettled_ || hasChanged()) load();
  return table_;
}

bool InstalledDesktopEntries::hasChanged() const {
  return std::ranges::any_of(
      watched_, [](const WatchedFolder& folder) { return changeTime(folder.path) != folder.changed; });
}

void InstalledDesktopEntries::load() const {
  // The time is taken before reading, so that changes during the reading cause another one.
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  watched_.clear();
  isSettled_ = true;
  const auto watch = [&](const std::string& folder) {
    watched_.push_back({folder, changeTime(folder)});
    const auto age = now - watched_.back().changed;
    if (age < kTimeResolution && age > -kTimeResolution) isSettled_ = false;
  };
  std::ranges::for_each(folders_.programs, watch);
  Reader reader(folders_.programs, watch);
  std::ranges::for_each(folders_.applications, [&](const auto& folder) { reader.read(folder); });
  table_ = std::make_shared<const DesktopEntryTable>(reader.takeEntries());
}

} // namespace sonvel::desktop
