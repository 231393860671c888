#pragma once

#include <unistd.h>
#include <utility>

namespace sonvel::updater {

/// An open file, closed with it.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) noexcept
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

} // namespace sonvel::updater
