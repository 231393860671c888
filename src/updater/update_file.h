#pragma once

#include "platform/update_run.h"

#include <span>

#include <QByteArray>
#include <filesystem>
#include <memory>
#include <optional>
#include <unistd.h>
#include <utility>

namespace sonvel::updater {

/// An open file, closed with this object.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor = -1) noexcept
      : descriptor_(descriptor) {}

  ~FileDescriptor() {
    if (isOpen()) ::close(descriptor_);
  }

  FileDescriptor(FileDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}

  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }

  bool isOpen() const noexcept { return descriptor_ >= 0; }

  int get() const noexcept { return descriptor_; }

 private:
  int descriptor_;
};

/// Writes all of `bytes`. False with errno set. Any thread; may block.
bool writeAll(int descriptor, std::span<const char> bytes);

/// Classifies an errno of writing: noSpace if space is missing, else `otherwise`.
UpdateFailure failureOfWriting(int error, UpdateFailure otherwise);

/// A downloaded file with a verified hash. It is a sealed, nameless file in memory, which cannot change, so
/// the installed bytes are the verified ones. Any thread.
class VerifiedUpdate {
 public:
  ~VerifiedUpdate();
  VerifiedUpdate(const VerifiedUpdate&) = delete;
  VerifiedUpdate& operator=(const VerifiedUpdate&) = delete;

  std::span<const char> bytes() const noexcept { return bytes_; }

  bool startsWith(std::string_view bytes) const noexcept;

  /// A path at which other processes of this user, and root, can open the file during this object's lifetime.
  /// It refers to the open file itself and cannot be redirected.
  std::filesystem::path path() const;

 private:
  friend class UpdateFile;

  VerifiedUpdate(FileDescriptor file, std::span<const char> bytes)
      : file_(std::move(file))
      , bytes_(bytes) {}

  FileDescriptor file_;
  std::span<const char> bytes_; ///< the mapped file
};

/// A file in memory, during its download.
class UpdateFile {
 public:
  /// If memory is short, the file is not open and errno is set.
  UpdateFile();

  /// None, or why the bytes could not be added.
  std::optional<UpdateFailure> append(const QByteArray& bytes);

  qint64 size() const noexcept { return size_; }

  /// Ends writing and compares the content's SHA-256 with `hash`. Null if they differ. Any thread; time
  /// proportional to the size.
  std::shared_ptr<const VerifiedUpdate> verify(const QByteArray& hash) &&;

 private:
  FileDescriptor file_;
  qint64 size_ = 0;
};

} // namespace sonvel::updater
