#include "pipewire/property_listeners.h"

#include "platform/audio_properties.h"

#include <utility>

namespace sonvel::pipewire {

PropertyListenerID PropertyListeners::add(AudioObjectID object, const PropertyAddress& address,
                                          PropertyListener listener, Value value) {
  listeners_.emplace(++lastID_, Entry{object, address, std::move(listener), std::move(value)});
  return lastID_;
}

void PropertyListeners::callChanged(const Read& read) {
  for (auto entry = listeners_.begin(); entry != listeners_.end();) {
    auto& [object, address, listener, value] = entry->second;
    Value now = read(object, address);
    if (!now && object != kSystemObject) {
      entry = listeners_.erase(entry);
      continue;
    }
    if (now != value) {
      value = std::move(now);
      listener(object, address);
    }
    ++entry;
  }
}

void PropertyListeners::forgetValues() {
  for (auto& [id, entry] : listeners_)
    if (entry.object == kSystemObject) entry.value.reset();
}

} // namespace sonvel::pipewire
