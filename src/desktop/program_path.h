#pragma once

// What the place and the name of a program's file tell about it. Pure functions on text; any thread.

#include <optional>
#include <string>
#include <string_view>

namespace sonvel::desktop {

/// The last component of a path.
std::string_view baseName(std::string_view path) noexcept;

/// A program that runs whatever script it is given (python3.11, sh, java ...): its own file says nothing of
/// the application.
bool isInterpreter(std::string_view path) noexcept;

/// An interpreter that people also type into.
bool isShell(std::string_view path) noexcept;

/// A program that only hands over to another one which the desktop or a sandbox starts (flatpak, snap ...).
bool isLauncher(std::string_view path) noexcept;

/// A helper that a library starts on behalf of any application: web engines and sandboxes. It belongs to the
/// process that started it.
bool isSharedHelper(std::string_view path) noexcept;

/// The folder that one application has for itself, such as /opt/app or /usr/lib/app. None for files in
/// folders that programs share, such as /usr/bin.
std::optional<std::string> installFolder(std::string_view path);

/// Whether a file lies in a folder, at any depth.
bool isWithin(std::string_view path, std::string_view folder) noexcept;

/// The name that a program has in common with the script that starts it: without ".sh", "-bin" and the like.
std::string_view programStem(std::string_view path) noexcept;

} // namespace sonvel::desktop
