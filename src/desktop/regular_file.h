#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace sonvel::desktop {

// Safe reading of files that others may have created: only regular files, never a pipe or device that would
// block, and up to a maximum size. No exceptions except std::bad_alloc; any thread.

/// The whole file. None if unreadable, not a regular file or larger than `maximumBytes`.
std::optional<std::string> readRegularFile(const std::string& path, std::size_t maximumBytes);

/// The first bytes of the file, at most `maximumBytes`. None if unreadable or not a regular file.
std::optional<std::string> readStartOfRegularFile(const std::string& path, std::size_t maximumBytes);

/// As readStartOfRegularFile; `path` is relative to the open folder.
std::optional<std::string> readStartOfRegularFile(int folder, const std::string& path,
                                                  std::size_t maximumBytes);

} // namespace sonvel::desktop
