#include "desktop/program_path.h"

#include <algorithm>
#include <array>

namespace sonvel::desktop {
namespace {

using namespace std::string_view_literals;

constexpr std::array kShells{"sh"sv, "bash"sv, "dash"sv, "zsh"sv, "fish"sv, "ksh"sv, "mksh"sv, "busybox"sv};
constexpr std::array kOtherInterpreters{
    "python"sv, "pypy"sv, "perl"sv,        "ruby"sv, "lua"sv,   "luajit"sv, "node"sv,     "php"sv,   "java"sv,
    "mono"sv,   "gjs"sv,  "gjs-console"sv, "wish"sv, "tclsh"sv, "guile"sv,  "electron"sv, "nodejs"sv};
constexpr std::array kLaunchers{"flatpak"sv,  "snap"sv, "systemd-run"sv, "gtk-launch"sv,
                                "xdg-open"sv, "gio"sv,  "dbus-send"sv,   "gdbus"sv};
constexpr std::array kSharedHelpers{"WebKitWebProcess"sv, "WebKitGPUProcess"sv, "WebKitNetworkProcess"sv,
                                    "QtWebEngineProcess"sv, "bwrap"sv};

/// Folders in which each application has a folder of its own.
constexpr std::array kInstallRoots{
    "/opt/"sv,       "/usr/lib/"sv,       "/usr/lib64/"sv,         "/usr/libexec/"sv,
    "/usr/share/"sv, "/usr/local/lib/"sv, "/usr/local/libexec/"sv, "/usr/local/share/"sv};
constexpr std::array kInstallRootsOfUser{"/.local/share/"sv, "/.local/lib/"sv, "/.local/opt/"sv};

constexpr std::array kStemSuffixes{".sh"sv,  ".py"sv,   ".jar"sv,     ".js"sv,    ".bin"sv,
                                   "-bin"sv, ".real"sv, "-wrapped"sv, "-stable"sv};

template <std::size_t size>
bool contains(const std::array<std::string_view, size>& names, std::string_view name) noexcept {
  return std::ranges::find(names, name) != names.end();
}

/// "python3.11" becomes "python".
std::string_view withoutVersion(std::string_view name) noexcept {
  const std::size_t last = name.find_last_not_of("0123456789.-");
  return name.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

std::string_view folderOf(std::string_view path) noexcept {
  const std::size_t slash = path.rfind('/');
  return path.substr(0, slash == std::string_view::npos ? 0 : slash);
}

/// The part of `folder` below an install root; empty if there is none.
std::string_view belowInstallRoot(std::string_view folder) noexcept {
  for (const auto root : kInstallRoots)
    if (folder.starts_with(root)) return folder.substr(root.size());
  for (const auto root : kInstallRootsOfUser)
    if (const auto at = folder.find(root); at != std::string_view::npos)
      return folder.substr(at + root.size());
  return {};
}

/// Shared by applications: an architecture's library folder (x86_64-linux-gnu), libexec, and the games
/// folder.
bool isSharedFolder(std::string_view below) noexcept {
  if (below.empty() || below == "games") return true;
  if (below.find("-linux-") == std::string_view::npos) return false;
  const std::size_t slash = below.find('/');
  return slash == std::string_view::npos || below.substr(slash) == "/libexec";
}

} // namespace

std::string_view baseName(std::string_view path) noexcept {
  return path.substr(path.rfind('/') + 1);
}

bool isInterpreter(std::string_view path) noexcept {
  const auto name = withoutVersion(baseName(path));
  return contains(kShells, name) || contains(kOtherInterpreters, name);
}

bool isShell(std::string_view path) noexcept {
  return contains(kShells, withoutVersion(baseName(path)));
}

bool isLauncher(std::string_view path) noexcept {
  return contains(kLaunchers, baseName(path));
}

bool isSharedHelper(std::string_view path) noexcept {
  return contains(kSharedHelpers, baseName(path));
}

std::optional<std::string> installFolder(std::string_view path) {
  auto folder = folderOf(path);
  if (baseName(folder) == "bin") folder = folderOf(folder);
  if (isSharedFolder(belowInstallRoot(folder))) return std::nullopt;
  return std::string(folder);
}

bool isWithin(std::string_view path, std::string_view folder) noexcept {
  return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

std::string_view programStem(std::string_view path) noexcept {
  auto name = baseName(path);
  for (const auto suffix : kStemSuffixes)
    if (name.size() > suffix.size() && name.ends_with(suffix))
      return name.substr(0, name.size() - suffix.size());
  return name;
}

} // namespace sonvel::desktop
