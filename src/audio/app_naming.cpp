#include "audio/app_naming.h"

#include <algorithm>

namespace sonvel::AppNaming {
namespace {

constexpr std::string_view kHelperMarker = ".helper";
constexpr std::string_view kWebKitPrefix = "com.apple.webkit";
constexpr std::string_view kSafariBundleID = "com.apple.Safari";
constexpr std::string_view kFallbackName = "Unknown App";
constexpr std::string_view kAggregatePrefix = "SonvelAgg";
constexpr std::string_view kProbePrefix = "SonvelProbe";

constexpr std::array<std::string_view, 18> kWhitespace{
    "\t",     " ",      "\u00A0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004",
    "\u2005", "\u2006", "\u2007", "\u2008", "\u2009", "\u200A", "\u202F", "\u205F", "\u3000",
};

constexpr char asciiLower(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// Lower case for comparisons with ASCII text. The Kelvin sign is the only character beyond ASCII that
/// lower-cases to ASCII.
std::string lowerCased(std::string_view text) {
  constexpr std::string_view kKelvinSign = "\u212A";
  std::string lower;
  lower.reserve(text.size());
  while (!text.empty()) {
    const bool isKelvinSign = text.starts_with(kKelvinSign);
    lower += isKelvinSign ? 'k' : asciiLower(text.front());
    text.remove_prefix(isKelvinSign ? kKelvinSign.size() : 1);
  }
  return lower;
}

/// Byte length of the whitespace character that `matches` accepts; 0 if none.
template <class Predicate> std::size_t whitespaceLength(Predicate matches) {
  const auto found = std::ranges::find_if(kWhitespace, matches);
  return found == kWhitespace.end() ? 0 : found->size();
}

std::string_view trimmed(std::string_view text) {
  while (const auto length = whitespaceLength([&](auto space) { return text.starts_with(space); }))
    text.remove_prefix(length);
  while (const auto length = whitespaceLength([&](auto space) { return text.ends_with(space); }))
    text.remove_suffix(length);
  return text;
}

std::string_view withoutRolesOfOnePass(std::string_view text) {
  for (const auto suffix : roleSuffixes) {
    if (!text.ends_with(suffix)) continue;
    text.remove_suffix(suffix.size());
    text = trimmed(text);
  }
  return text;
}

std::optional<std::string> knownName(std::string_view parent) {
  const auto key = lowerCased(parent);
  const FriendlyName* best = nullptr;
  for (const auto& row : knownFriendly) {
    if (key.starts_with(row.prefix) && (best == nullptr || row.prefix.size() > best->prefix.size()))
      best = &row;
  }
  if (best == nullptr) return std::nullopt;
  return std::string(best->name);
}

/// The last non-empty part between dots.
std::optional<std::string> lastPiece(std::string_view identifier) {
  const auto last = identifier.find_last_not_of('.');
  if (last == std::string_view::npos) return std::nullopt;
  const auto dot = identifier.find_last_of('.', last);
  const auto first = dot == std::string_view::npos ? 0 : dot + 1;
  return std::string(identifier.substr(first, last + 1 - first));
}

} // namespace

std::optional<std::string> parentBundleID(std::optional<std::string_view> bundleID) {
  if (!bundleID || bundleID->empty()) return std::nullopt;
  const auto marker = std::ranges::search(*bundleID, kHelperMarker, {}, asciiLower);
  const std::string parent(bundleID->begin(), marker.begin());
  if (lowerCased(parent).starts_with(kWebKitPrefix)) return std::string(kSafariBundleID);
  return parent;
}

std::string friendlyName(std::optional<std::string_view> bundleID,
                         std::optional<std::string_view> processName,
                         std::optional<std::string_view> localizedName) {
  const auto parent = parentBundleID(bundleID);
  if (parent) {
    if (auto name = knownName(*parent)) return *std::move(name);
  }
  if (auto name = cleanedProcessName(localizedName)) return *std::move(name);
  if (auto name = cleanedProcessName(processName)) return *std::move(name);
  if (localizedName && !localizedName->empty()) return std::string(*localizedName);
  if (!bundleID || !parent) return std::string(kFallbackName);
  return lastPiece(*parent).value_or(std::string(*bundleID));
}

std::optional<std::string> cleanedProcessName(std::optional<std::string_view> name) {
  if (!name) return std::nullopt;
  auto text = trimmed(*name);
  for (std::size_t before = 0; before != text.size();) {
    before = text.size();
    text = withoutRolesOfOnePass(text);
  }
  if (text.empty()) return std::nullopt;
  return std::string(text);
}

bool isSystemAudioProcess(std::optional<std::string_view> executableName,
                          std::optional<std::string_view> bundleID, bool isRunningApp) {
  if (executableName &&
      std::ranges::find(systemAudioProcessNames, *executableName) != systemAudioProcessNames.end())
    return true;
  if (bundleID && !bundleID->empty()) return false;
  return !isRunningApp;
}

bool isOwnAggregateDevice(std::string_view name) {
  return name.starts_with(kAggregatePrefix) || name.starts_with(kProbePrefix);
}

} // namespace sonvel::AppNaming
