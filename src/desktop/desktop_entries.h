#pragma once

#include "desktop/desktop_entry_table.h"

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace sonvel::desktop {

/// Where desktop entries and the programs that they start are found; the first folder counts most.
struct DesktopFolders {
  std::vector<std::string> applications;
  std::vector<std::string> programs;

  /// The folders of this user's session.
  static DesktopFolders standard();
};

/// The installed applications, read again when one of the folders has changed since.
///
/// The folders' own times are the sign: GIO's monitor tells its news through a main loop, which the threads
/// that ask here do not have. An entry that is rewritten in place, without a new file, is seen at the next
/// change of its folder.
class InstalledDesktopEntries final : public DesktopEntries {
 public:
  explicit InstalledDesktopEntries(DesktopFolders folders = DesktopFolders::standard());

  std::shared_ptr<const DesktopEntryTable> current() const override;

 private:
  struct WatchedFolder {
    std::string path;
    std::chrono::nanoseconds changed; ///< since the epoch; zero if there is no such folder
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
