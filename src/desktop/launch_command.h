#pragma once

#include <span>

#include <optional>
#include <string>
#include <vector>

namespace sonvel::desktop {

/// What a desktop entry starts.
struct LaunchCommand {
  /// Canonical path of the program, or of the script if the command runs an interpreter. None if it can't be
  /// found, or if the command leaves the choice to another program (flatpak, a line for a shell).
  std::optional<std::string> program = {};

  bool isScript = false;                   ///< the program is text that an interpreter runs
  std::vector<std::string> arguments = {}; ///< what it always gets, without the places for files and URLs

  bool operator==(const LaunchCommand&) const = default;
};

/// Reads the command line of a desktop entry. `programFolders` are searched for programs without a path.
/// Reads the file system; any thread.
LaunchCommand parseLaunchCommand(const std::string& commandLine, std::span<const std::string> programFolders);

/// Where, in the words that follow an interpreter, the script stands that it runs. None if it runs no file:
/// it is typed into, or has got its code or a module's name.
std::optional<std::size_t> scriptPosition(std::span<const std::string> words) noexcept;

/// The path without links and detours. None if nothing is there.
std::optional<std::string> canonicalPath(const std::string& path);

} // namespace sonvel::desktop
