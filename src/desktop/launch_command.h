#pragma once

#include <span>

#include <optional>
#include <string>
#include <vector>

namespace sonvel::desktop {

/// The command of a desktop entry.
struct LaunchCommand {
  /// Canonical path of the executable, or of the script if the command runs an interpreter. None if not
  /// found, or if another program makes the choice (flatpak, a shell line).
  std::optional<std::string> program = {};

  bool isScript = false;                   ///< the program is a script
  std::vector<std::string> arguments = {}; ///< fixed arguments, without placeholders for files and URLs

  bool operator==(const LaunchCommand&) const = default;
};

/// Parses the command line of a desktop entry. `programFolders` are searched for programs without a path. Any
/// thread; reads the file system.
LaunchCommand parseLaunchCommand(const std::string& commandLine, std::span<const std::string> programFolders);

/// The index of the script among the words after an interpreter. None without a script file: interactive, or
/// with code or a module name as argument.
std::optional<std::size_t> scriptPosition(std::span<const std::string> words) noexcept;

/// The absolute path without symbolic links, "." and "..". None if it does not exist.
std::optional<std::string> canonicalPath(const std::string& path);

} // namespace sonvel::desktop
