#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

/// How a process is presented: which ones are hidden, which application a helper process belongs to, and the
/// displayed name. Pure functions on UTF-8 text; any thread. Whitespace is the tab and Unicode's space
/// separators.
namespace sonvel::AppNaming {

struct FriendlyName {
  std::string_view prefix; ///< of a bundle identifier; lower-case ASCII
  std::string_view name;
};

/// Names that replace the process's own name. The longest matching prefix wins, then the earlier row.
inline constexpr std::array<FriendlyName, 20> knownFriendly{{
    {"com.google.chrome", "Google Chrome"},
    {"org.chromium.chromium", "Chromium"},
    {"com.microsoft.edgemac", "Microsoft Edge"},
    {"com.brave.browser", "Brave Browser"},
    {"company.thebrowser.browser", "Arc"},
    {"org.mozilla.firefox", "Firefox"},
    {"com.operasoftware.opera", "Opera"},
    {"com.apple.safari", "Safari"},
    {"com.apple.music", "Music"},
    {"com.apple.tv", "Apple TV"},
    {"com.apple.podcasts", "Podcasts"},
    {"com.apple.quicktimeplayerx", "QuickTime Player"},
    {"com.spotify.client", "Spotify"},
    {"com.hnc.discord", "Discord"},
    {"us.zoom.xos", "Zoom"},
    {"com.tinyspeck.slackmacgap", "Slack"},
    {"com.microsoft.teams2", "Microsoft Teams"},
    {"com.microsoft.teams", "Microsoft Teams"},
    {"org.videolan.vlc", "VLC"},
    {"com.apple.voicememos", "Voice Memos"},
}};

/// Suffixes of helper process names, in the order of trying.
inline constexpr std::array<std::string_view, 16> roleSuffixes{
    " Graphics and Media", " Web Content",
    " Networking",         " Storage",
    " GPU Process",        " GPU",
    " Helper (Renderer)",  " Helper (GPU)",
    " Helper (Plugin)",    " Helper (Alerts)",
    " Helper (Media)",     " Helper",
    " (Renderer)",         " (GPU)",
    " (Plugin)",           " (Media)",
};

/// Executables that are never listed; case-sensitive.
inline constexpr std::array<std::string_view, 4> systemAudioProcessNames{"systemsoundserverd", "coreaudiod",
                                                                         "avconferenced", "SystemUIServer"};

/// The bundle identifier of the application that a process belongs to; an ordinary application is its own
/// parent. None only if `bundleID` is absent or empty.
std::optional<std::string> parentBundleID(std::optional<std::string_view> bundleID);

/// The displayed name. Never empty.
std::string friendlyName(std::optional<std::string_view> bundleID,
                         std::optional<std::string_view> processName,
                         std::optional<std::string_view> localizedName);

/// A name without helper suffixes. None if nothing is left; never an empty string.
std::optional<std::string> cleanedProcessName(std::optional<std::string_view> name);

/// Whether a process is a system service that the user would not recognise.
bool isSystemAudioProcess(std::optional<std::string_view> executableName,
                          std::optional<std::string_view> bundleID, bool isRunningApp);

/// Whether a device with this name is an aggregate device of this program.
bool isOwnAggregateDevice(std::string_view name);

} // namespace sonvel::AppNaming
