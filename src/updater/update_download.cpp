#include "updater/update_download.h"

#include "updater/file_writing.h"

#include <QStorageInfo>
#include <cerrno>
#include <utility>

namespace sonvel::updater {
namespace {

/// Twice what the program with all its libraries takes today, and little enough to verify in memory.
constexpr qint64 kMaximumBytes = 256LL * 1024 * 1024;
constexpr Clock::Duration kStallTimeout = std::chrono::seconds(30);
constexpr Clock::Duration kTotalTimeout = std::chrono::hours(2);

} // namespace

std::optional<UpdateFailure> faultOf(const AppcastItem& item, AddressPolicy policy) {
  if (!isAllowed(item.address, policy)) return UpdateFailure::insecureDownload;
  if (item.length <= 0) return UpdateFailure::downloadWithoutLength;
  if (item.length > kMaximumBytes) return UpdateFailure::downloadTooLarge;
  if (item.signature.isEmpty()) return UpdateFailure::downloadWithoutSignature;
  return std::nullopt;
}

UpdateDownload::UpdateDownload(QNetworkAccessManager& network, Clock& clock, const QString& downloadFolder,
                               const AppcastItem& item, AddressPolicy policy, Progress progress, Done done)
    : progress_(std::move(progress)) {
  std::optional<UpdateFailure> failure = faultOf(item, policy);
  if (!failure) failure = open(downloadFolder, item.length);
  if (failure) {
    relay_.bind([failure, done = std::move(done)] { done(failure); })();
    return;
  }
  const FetchRequest request{.address = item.address,
                             .policy = policy,
                             .maximumBytes = item.length,
                             .tooLarge = UpdateFailure::wrongLength,
                             .stallTimeout = kStallTimeout,
                             .totalTimeout = kTotalTimeout};
  fetch_ = std::make_unique<Fetch>(
      network, clock, request, [this](const QByteArray& piece) { return take(piece); },
      [this, done = std::move(done)](std::optional<UpdateFailure> ended) { close(ended, done); });
}

std::filesystem::path UpdateDownload::file() const {
  return folder_->file(QStringLiteral("update"));
}

std::optional<UpdateFailure> UpdateDownload::open(const QString& downloadFolder, qint64 length) {
  folder_ = DownloadFolder::make(downloadFolder);
  if (!folder_) return UpdateFailure::noFolder;
  const QStorageInfo disk(downloadFolder);
  if (disk.isValid() && disk.bytesAvailable() < length) return UpdateFailure::diskFull;
  output_ = createFile(file());
  if (!output_.isOpen()) return failureOfWriting(errno, UpdateFailure::noFolder);
  return std::nullopt;
}

std::optional<UpdateFailure> UpdateDownload::take(const QByteArray& piece) {
  if (!writeAll(output_.get(), piece)) return failureOfWriting(errno, UpdateFailure::noFolder);
  receivedBytes_ += piece.size();
  progress_(receivedBytes_);
  return std::nullopt;
}

void UpdateDownload::close(std::optional<UpdateFailure> failure, const Done& done) {
  output_ = FileDescriptor(-1);
  // The callback may destroy this object and with it the function that `done` is a part of.
  const Done last = done;
  last(failure);
}

} // namespace sonvel::updater
