#pragma once

#include "platform/audio_hardware.h"

#include <map>
#include <set>
#include <utility>

namespace sonvel {

/// Listens to a changing set of the audio system's properties. One thread; blocks as the audio system does.
class ChangeListeners {
 public:
  using Property = std::pair<AudioObjectID, std::uint32_t>; ///< object and selector, global scope

  /// Receives the selector of the changed property.
  using OnChange = std::function<void(std::uint32_t selector)>;

  /// `onChange` is called after each change, on a thread of the audio system; it must not block. `hardware`
  /// outlives the listeners.
  ChangeListeners(AudioHardware& hardware, OnChange onChange);
  ~ChangeListeners();
  ChangeListeners(const ChangeListeners&) = delete;
  ChangeListeners& operator=(const ChangeListeners&) = delete;

  /// Listens to exactly these properties from now on. Failed registrations are retried at the next call.
  /// Returns whether a property is new: it may have changed since it was last read.
  bool listenTo(const std::set<Property>& properties);

  /// Call when objects may have gone and new ones may have taken their IDs since the last listenTo(): the
  /// listeners ended with the objects.
  void forgetObjects();

 private:
  AudioHardware& hardware_;
  const OnChange onChange_;
  std::map<Property, PropertyListenerID> listeners_;
};

} // namespace sonvel
