#pragma once

#include "platform/audio_hardware.h"

#include <map>
#include <set>
#include <utility>

namespace sonvel {

/// Listens to a set of properties of the audio system that changes. One thread; blocks as the audio system
/// does.
class ChangeListeners {
 public:
  using Property = std::pair<AudioObjectID, std::uint32_t>; ///< object and selector, in the global scope

  /// Takes the selector of the property that has changed.
  using OnChange = std::function<void(std::uint32_t selector)>;

  /// `onChange` is called after each change, on a thread of the audio system, and must not block. `hardware`
  /// outlives the listeners.
  ChangeListeners(AudioHardware& hardware, OnChange onChange);
  ~ChangeListeners();
  ChangeListeners(const ChangeListeners&) = delete;
  ChangeListeners& operator=(const ChangeListeners&) = delete;

  /// From now on listens to these and no others. What can't be listened to is tried again at the next call.
  /// Whether there is a new one: what it is about may have changed since it was last looked at.
  bool listenTo(const std::set<Property>& properties);

  /// For when objects may have gone, and come again under the same ID, since the last call: their listeners
  /// have ended.
  void forgetObjects();

 private:
  AudioHardware& hardware_;
  const OnChange onChange_;
  std::map<Property, PropertyListenerID> listeners_;
};

} // namespace sonvel
