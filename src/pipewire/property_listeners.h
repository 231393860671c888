#pragma once

#include "platform/audio_types.h"

#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace sonvel::pipewire {

/// The property listeners, with the value at the last call of each. Use with the loop's lock held.
class PropertyListeners {
 public:
  /// The value of a property; none if the object has gone.
  using Value = std::optional<std::vector<std::byte>>;
  using Read = std::function<Value(AudioObjectID object, const PropertyAddress& address)>;

  PropertyListenerID add(AudioObjectID object, const PropertyAddress& address, PropertyListener listener,
                         Value value);

  void remove(PropertyListenerID id) { listeners_.erase(id); }

  /// Calls the listeners whose property has changed. Listeners of removed objects end without a call. Loop
  /// thread.
  void callChanged(const Read& read);

  /// After a change of server: the system object's listeners are called at the next callChanged().
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
