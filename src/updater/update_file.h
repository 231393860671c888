#pragma once

#include "platform/update_session.h"

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

/// What an errno of writing means: noSpace where space is what was missing, `otherwise` for the rest.
UpdateFailure failureOfWriting(int error, UpdateFailure otherwise);

/// A downloaded file whose hash was right. It lies in memory without a name, and the kernel refuses every
/// further change to it, so what was verified is what is installed. Any thread.
class VerifiedUpdate {
 public:
  ~VerifiedUpdate();
  VerifiedUpdate(const VerifiedUpdate&) = delete;
  VerifiedUpdate& operator=(const VerifiedUpdate&) = delete;

  std::span<const char> bytes() const noexcept { return bytes_; }

  bool startsWith(std::string_view bytes) const noexcept;

  /// A path at which other processes of this user, and root, can open the file for as long as this object
  /// lives. It leads to the open file itself; no other can be put in its place.
  std::filesystem::path path() const;

 private:
  friend class UpdateFile;

  VerifiedUpdate(FileDescriptor file, std::span<const char> bytes)
      : file_(std::move(file))
      , bytes_(bytes) {}

  FileDescriptor file_;
  std::span<const char> bytes_; ///< the file, mapped
};

/// A file that is being downloaded, in memory.
class UpdateFile {
 public:
  /// With errno set, a file that is not open if the system has no memory for it.
  UpdateFile();

  /// None, or why the bytes could not be added.
  std::optional<UpdateFailure> append(const QByteArray& bytes);

  qint64 size() const noexcept { return size_; }

  /// Ends the writing and compares the content with `hash`, a SHA-256. Null if it is another. Any thread;
  /// takes time in proportion to the file.
  std::shared_ptr<const VerifiedUpdate> verify(const QByteArray& hash) &&;

 private:
  FileDescriptor file_;
  qint64 size_ = 0;
};

} // namespace sonvel::updater
