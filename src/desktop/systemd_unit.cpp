#include "desktop/systemd_unit.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace sonvel::desktop {
namespace {

constexpr std::size_t kUUIDLength = 36;

/// Decodes "\x2d" and the like.
std::string unescaped(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    unsigned char code = 0;
    if (text.starts_with("\\x") && text.size() >= 4 &&
        std::from_chars(text.data() + 2, text.data() + 4, code, 16).ptr == text.data() + 4) {
      result += static_cast<char>(code);
      text.remove_prefix(4);
    } else {
      result += text.front();
      text.remove_prefix(1);
    }
  }
  return result;
}

bool removePrefix(std::string_view& text, std::string_view prefix) noexcept {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

bool removeSuffix(std::string_view& text, std::string_view suffix) noexcept {
  if (!text.ends_with(suffix)) return false;
  text.remove_suffix(suffix.size());
  return true;
}

void cutAt(std::string_view& text, std::size_t position) noexcept {
  text = text.substr(0, position);
}

/// "[launcher-]ID": a conforming ID has its dashes escaped, so the part after the first dash is tried first.
std::vector<std::string> withAndWithoutLauncher(std::string_view name) {
  std::vector<std::string> ids;
  const std::size_t dash = name.find('-');
  if (dash != std::string_view::npos) ids.push_back(unescaped(name.substr(dash + 1)));
  ids.push_back(unescaped(name));
  return ids;
}

/// "snap.<name>.<app>", then "-" or "." and a UUID in scopes: the entry is "<name>_<app>".
std::vector<std::string> idsOfSnap(std::string_view name) {
  if (name.size() > kUUIDLength + 1) {
    const std::string_view uuid = name.substr(name.size() - kUUIDLength);
    const char before = name[name.size() - kUUIDLength - 1];
    if (std::ranges::count(uuid, '-') == 4 && (before == '-' || before == '.'))
      cutAt(name, name.size() - kUUIDLength - 1);
  }
  const std::size_t dot = name.find('.');
  if (dot == std::string_view::npos) return {};
  return {unescaped(name.substr(0, dot)) + '_' + unescaped(name.substr(dot + 1))};
}

/// "dbus-<bus name of the caller>-<ID>@<number>.service".
std::vector<std::string> idsOfBusService(std::string_view name) {
  const std::size_t dash = name.find('-');
  if (dash == std::string_view::npos) return {};
  return {unescaped(name.substr(dash + 1))};
}

} // namespace

std::vector<std::string> applicationIDsOfUnit(std::string_view unit) {
  const bool isScope = removeSuffix(unit, ".scope");
  if (!isScope && !removeSuffix(unit, ".service")) return {};
  if (removePrefix(unit, "snap.")) return idsOfSnap(unit);

  const bool isApplication = removePrefix(unit, "app-");
  if (!isApplication && !removePrefix(unit, "dbus-")) return {};
  if (isScope) {
    const std::size_t dash = unit.rfind('-');
    if (dash == std::string_view::npos) return {};
    cutAt(unit, dash);
  } else {
    cutAt(unit, unit.find('@'));
  }
  if (unit.empty()) return {};
  return isApplication ? withAndWithoutLauncher(unit) : idsOfBusService(unit);
}

} // namespace sonvel::desktop
