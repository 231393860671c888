#pragma once

#include "platform/preferences.h"

#include <map>

namespace sonvel::updater {

/// Texts alone, for as long as this object exists.
struct MemoryPreferences final : Preferences {
  bool boolForKey(const std::string& key) const override { return texts.contains(key); }

  bool setBool(bool, const std::string&) override { return false; }

  std::optional<std::string> stringForKey(const std::string& key) const override {
    const auto found = texts.find(key);
    return found == texts.end() ? std::nullopt : std::optional(found->second);
  }

  bool setString(const std::string& value, const std::string& key) override {
    texts[key] = value;
    return true;
  }

  std::map<std::string, std::string> texts;
};

} // namespace sonvel::updater
