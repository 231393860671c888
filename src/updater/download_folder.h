#pragma once

#include <QString>
#include <filesystem>
#include <memory>

class QTemporaryDir;

namespace sonvel::updater {

/// A folder that this user alone may enter, for one download; it goes with all that is in it. Main thread.
class DownloadFolder {
 public:
  /// A new one in `parent`, which is made if need be. Null if that fails.
  static std::unique_ptr<DownloadFolder> make(const QString& parent);
  ~DownloadFolder();

  std::filesystem::path file(const QString& name) const;

  /// Leaves the folder on disk, for another program that still needs it.
  void keep();

  /// Deletes the folder now, even one that was to be kept.
  void remove();

  /// Deletes what earlier runs have left in `parent`.
  static void sweep(const QString& parent);

 private:
  explicit DownloadFolder(std::unique_ptr<QTemporaryDir> folder);

  std::unique_ptr<QTemporaryDir> folder_;
};

} // namespace sonvel::updater
