#pragma once

#include "platform/audio_types.h"

#include <map>
#include <string>

namespace sonvel::pipewire {

/// Allocates object IDs; none is reused.
class ObjectIDs {
 public:
  AudioObjectID next() noexcept { return next_++; }

 private:
  static constexpr AudioObjectID kFirst = 100; // above the system object and the server's first IDs
  AudioObjectID next_ = kFirst;
};

/// Gives an ID to each lasting name; the same name always gets the same ID.
class ObjectTable {
 public:
  explicit ObjectTable(ObjectIDs& ids) noexcept
      : ids_(ids) {}

  AudioObjectID idOf(const std::string& name) {
    const auto [entry, isNew] = idByName_.try_emplace(name, kAudioObjectUnknown);
    if (isNew) nameByID_[entry->second = ids_.next()] = name;
    return entry->second;
  }

  /// Null if this table did not allocate the ID.
  const std::string* nameOf(AudioObjectID id) const {
    const auto found = nameByID_.find(id);
    return found == nameByID_.end() ? nullptr : &found->second;
  }

 private:
  ObjectIDs& ids_;
  std::map<std::string, AudioObjectID> idByName_;
  std::map<AudioObjectID, std::string> nameByID_;
};

} // namespace sonvel::pipewire
