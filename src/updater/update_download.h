#pragma once

#include "updater/appcast.h"
#include "updater/download_folder.h"
#include "updater/fetch.h"
#include "updater/file_descriptor.h"

#include <QNetworkAccessManager>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace sonvel::updater {

/// Why an item can't be downloaded, going by what the feed says of it alone.
std::optional<UpdateFailure> faultOf(const AppcastItem& item, AddressPolicy policy);

/// Brings an item's file into a private folder, unread. Destroying it cancels and deletes the file. Main
/// thread.
class UpdateDownload {
 public:
  using Progress = std::function<void(qint64 receivedBytes)>;

  /// As Fetch::Done.
  using Done = Fetch::Done;

  /// `network` and `clock` live longer.
  UpdateDownload(QNetworkAccessManager& network, Clock& clock, const QString& downloadFolder,
                 const AppcastItem& item, AddressPolicy policy, Progress progress, Done done);

  /// The file, once it is all there. Its name says nothing that the feed chose.
  std::filesystem::path file() const;

  /// The folder with all that is in it, for someone who needs it for longer.
  std::unique_ptr<DownloadFolder> takeFolder() noexcept { return std::move(folder_); }

 private:
  std::optional<UpdateFailure> open(const QString& downloadFolder, qint64 length);
  std::optional<UpdateFailure> take(const QByteArray& piece);
  void close(std::optional<UpdateFailure> failure, const Done& done);

  Progress progress_;
  std::unique_ptr<DownloadFolder> folder_;
  FileDescriptor output_{-1};
  qint64 receivedBytes_ = 0;
  Relay relay_;
  std::unique_ptr<Fetch> fetch_;
};

} // namespace sonvel::updater
