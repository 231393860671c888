#pragma once

#include "platform/preferences.h"

#include <map>

namespace sonvel::simulated {

/// Preferences in memory.
class SimulatedPreferences final : public Preferences {
 public:
  bool boolForKey(const std::string& key) const override { return flags_.contains(key) && flags_.at(key); }

  bool setBool(bool value, const std::string& key) override {
    flags_[key] = value;
    return true;
  }

  std::optional<std::string> stringForKey(const std::string& key) const override {
    return texts_.contains(key) ? std::optional(texts_.at(key)) : std::nullopt;
  }

  bool setString(const std::string& value, const std::string& key) override {
    texts_[key] = value;
    return true;
  }

 private:
  std::map<std::string, bool> flags_;
  std::map<std::string, std::string> texts_;
};

} // namespace sonvel::simulated
