#pragma once

#include "platform/audio_types.h"

#include <map>
#include <optional>
#include <string>

namespace sonvel::pipewire {

/// Hands out the IDs of objects; none is ever used again.
class ObjectIDs {
 public:
  AudioObjectID next() noexcept { return next_++; }

 private:
  static constexpr AudioObjectID kFirst =
      100; // none that could be taken for the system object or a server's ID
  AudioObjectID next_ = kFirst;
};

/// Gives things that have a lasting name an ID that is the same whenever they are seen again.
class ObjectTable {
 public:
  explicit ObjectTable(ObjectIDs& ids) noexcept
      : ids_(ids) {}

  AudioObjectID idOf(const std::string& name) {
    const auto [entry, isNew] = idByName_.try_emplace(name, kAudioObjectUnknown);
    if (isNew) nameByID_[entry->second = ids_.next()] = name;
    return entry->second;
  }

  /// None for an ID that this table did not give.
  std::optional<std::string> nameOf(AudioObjectID id) const {
    const auto found = nameByID_.find(id);
    return found == nameByID_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  ObjectIDs& ids_;
  std::map<std::string, AudioObjectID> idByName_;
  std::map<AudioObjectID, std::string> nameByID_;
};

} // namespace sonvel::pipewire
