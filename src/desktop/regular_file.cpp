#include "desktop/regular_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sonvel::desktop {
namespace {

bool isRegular(int file) noexcept {
  struct stat status {};

  return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

/// Reads until the end of the file; files of a process that has ended count as ended.
std::optional<std::string> read(int file, std::size_t maximumBytes) {
  std::string text;
  std::array<char, 4096> block{};
  while (text.size() < maximumBytes) {
    const ssize_t count = ::read(file, block.data(), std::min(block.size(), maximumBytes - text.size()));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  return text;
}

} // namespace

std::optional<std::string> readStartOfRegularFile(int folder, const std::string& path,
                                                  std::size_t maximumBytes) {
  // Without O_NONBLOCK, opening a pipe waits for a writer.
  const int file = openat(folder, path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return std::nullopt;
  auto text = isRegular(file) ? read(file, maximumBytes) : std::nullopt;
  close(file);
  return text;
}

std::optional<std::string> readStartOfRegularFile(const std::string& path, std::size_t maximumBytes) {
  return readStartOfRegularFile(AT_FDCWD, path, maximumBytes);
}

std::optional<std::string> readRegularFile(const std::string& path, std::size_t maximumBytes) {
  auto text = readStartOfRegularFile(path, maximumBytes + 1);
  return text && text->size() <= maximumBytes ? text : std::nullopt;
}

} // namespace sonvel::desktop
