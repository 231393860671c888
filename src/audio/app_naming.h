#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

/// How a process is presented: which ones stay hidden, which application a helper process belongs to, and
/// what it is called. Pure functions on UTF-8 text; any thread. Whitespace is the tab and Unicode's space
/// separators.
namespace sonvel::AppNaming {

struct FriendlyName {
  std::string_view prefix; ///< of a bundle identifier, in lower case and ASCII
  std::string_view name;
};

/// Names that win over what a process calls itself. The longest prefix decides, then the earlier row.
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

/// Endings that name the role of a helper process, in the order in which they are tried.
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

/// Executables that are never listed; the case counts.
inline constexpr std::array<std::string_view, 4> systemAudioProcessNames{"systemsoundserverd", "coreaudiod",
                                                                         "avconferenced", "SystemUIServer"};

/// The application that a process belongs to, by bundle identifier: an ordinary application is its own. None
/// only if `bundleID` is absent or empty.
std::optional<std::string> parentBundleID(std::optional<std::string_view> bundleID);

/// The name that the user sees. Never absent.
std::string friendlyName(std::optional<std::string_view> bundleID,
                         std::optional<std::string_view> processName,
                         std::optional<std::string_view> localizedName);

/// A name without the roles at its end. None if nothing is left; never an empty text.
std::optional<std::string> cleanedProcessName(std::optional<std::string_view> name);

/// Whether a process is plumbing of the system, which the user would not recognise.
bool isSystemAudioProcess(std::optional<std::string_view> executableName,
                          std::optional<std::string_view> bundleID, bool isRunningApp);

/// Whether a device of that name is an aggregate device that this program has made.
bool isOwnAggregateDevice(std::string_view name);

} // namespace sonvel::AppNaming
