#pragma once

// What the path and name of an executable reveal. Pure functions on text; any thread.

#include <optional>
#include <string>
#include <string_view>

namespace sonvel::desktop {

/// The last component of a path.
std::string_view baseName(std::string_view path) noexcept;

/// A program that runs given scripts (python3.11, sh, java ...): its own file does not identify the
/// application.
bool isInterpreter(std::string_view path) noexcept;

/// An interpreter that is also used interactively.
bool isShell(std::string_view path) noexcept;

/// A program that only asks the desktop or a sandbox to start another one (flatpak, snap ...).
bool isLauncher(std::string_view path) noexcept;

/// A helper that a library starts for any application, such as web engines and sandboxes. It belongs to the
/// process that started it.
bool isSharedHelper(std::string_view path) noexcept;

/// A folder that belongs to one application, such as /opt/app or /usr/lib/app. None for shared folders such
/// as /usr/bin.
std::optional<std::string> installFolder(std::string_view path);

/// Whether `path` is in `folder`, at any depth.
bool isWithin(std::string_view path, std::string_view folder) noexcept;

/// The name that a program shares with the script that starts it: without ".sh", "-bin" and the like.
std::string_view programStem(std::string_view path) noexcept;

} // namespace sonvel::desktop
