#pragma once

#include "desktop/desktop_entry_table.h"

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace sonvel::desktop {

/// Where desktop entries and their programs are found; earlier folders have priority.
struct DesktopFolders {
  std::vector<std::string> applications;
  std::vector<std::string> programs;

  /// The folders of this user's session.
  static DesktopFolders standard();
};

/// The installed applications; read again after a change of one of the folders.
///
/// Changes are detected by the folders' modification times, because GIO's monitor needs a main loop, which
/// the calling threads lack. An entry that is rewritten in place is noticed at the next change of its folder.
class InstalledDesktopEntries final : public DesktopEntries {
 public:
  explicit InstalledDesktopEntries(DesktopFolders folders = DesktopFolders::standard());

  std::shared_ptr<const DesktopEntryTable> current() const override;

 private:
  struct WatchedFolder {
    std::string path;
    std::chrono::nanoseconds changed; ///< since the epoch; zero if the folder does not exist
  };

  bool hasChanged() const;
  void load() const;

  const DesktopFolders folders_;
  mutable std::mutex mutex_;
  mutable std::vector<WatchedFolder> watched_;
  mutable bool isSettled_ = false;
  mutable std::shared_ptr<const DesktopEntryTable> table_;
};

} // namespace sonvel::desktop
