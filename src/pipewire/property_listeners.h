#pragma once

#include "platform/audio_types.h"

#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace sonvel::pipewire {

/// Who listens to which property, with the value that each was last called for. Belongs to whoever holds the
/// loop's lock.
class PropertyListeners {
 public:
  /// The value of a property; none if the object has gone.
  using Value = std::optional<std::vector<std::byte>>;
  using Read = std::function<Value(AudioObjectID object, const PropertyAddress& address)>;

  PropertyListenerID add(AudioObjectID object, const PropertyAddress& address, PropertyListener listener,
                         Value value);

  void remove(PropertyListenerID id) { listeners_.erase(id); }

  /// Calls those whose property has another value now. Listeners of objects that are gone end without a call.
  /// On the loop thread.
  void callChanged(const Read& read);

  /// The server was another in the meantime: the listeners of the system object are called at the next time.
  void forgetValues();

  bool isEmpty() const noexcept { return listeners_.empty(); }

 private:
  struct Entry {
    AudioObjectID object = kAudioObjectUnknown;
    PropertyAddress address;
    PropertyListener listener;
    Value value;
  };

  std::map<PropertyListenerID, Entry> listeners_;
  PropertyListenerID lastID_ = 0;
};

} // namespace sonvel::pipewire
