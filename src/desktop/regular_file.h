#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace sonvel::desktop {

// Files that others may have put in place: only a regular file is read, never a pipe or a device that would
// block, and never more of it than fits. No exceptions besides std::bad_alloc; any thread.

/// All of the file. None if it can't be read, is no regular file or has more than `maximumBytes`.
std::optional<std::string> readRegularFile(const std::string& path, std::size_t maximumBytes);

/// The file's first bytes, `maximumBytes` at most. None if it can't be read or is no regular file.
std::optional<std::string> readStartOfRegularFile(const std::string& path, std::size_t maximumBytes);

/// As readStartOfRegularFile; `path` is relative to the open folder.
std::optional<std::string> readStartOfRegularFile(int folder, const std::string& path,
                                                  std::size_t maximumBytes);

} // namespace sonvel::desktop
