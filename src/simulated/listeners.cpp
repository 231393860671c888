#include "simulated/simulated_hardware.h"

#include <algorithm>

namespace sonvel::simulated {

OSStatus SimulatedHardware::addPropertyListener(AudioObjectID object, const PropertyAddress& address,
                                                PropertyListener listener, PropertyListenerID& id) {
  const std::lock_guard lock(mutex_);
  PropertyValue value;
  if (const OSStatus status = findProperty(object, address, value)) return status;
  id = nextListenerID_++;
  listeners_.push_back({id, {object, address}, std::move(listener)});
  return kNoError;
}

OSStatus SimulatedHardware::removePropertyListener(PropertyListenerID id) {
  const std::lock_guard noneRuns(listenerMutex_);
  const std::lock_guard lock(mutex_);
  std::erase_if(listeners_, [id](const Listener& listener) { return listener.id == id; });
  return kNoError;
}

void SimulatedHardware::changed(AudioObjectID object, std::uint32_t selector) {
  changes_.push_back({object, {selector, scope::kGlobal, kElementMain}});
}

void SimulatedHardware::endListeners(AudioObjectID object) {
  std::erase_if(listeners_, [object](const Listener& listener) { return listener.property.first == object; });
}

void SimulatedHardware::tellListeners() {
  const std::lock_guard oneAtATime(listenerMutex_);
  std::vector<Listener> due;
  {
    const std::lock_guard lock(mutex_);
    if (changes_.empty()) return; // as after most calls
    const auto hasChanged = [this](const Listener& listener) {
      return std::find(changes_.begin(), changes_.end(), listener.property) != changes_.end();
    };
    std::copy_if(listeners_.begin(), listeners_.end(), std::back_inserter(due), hasChanged);
    changes_.clear();
  }
  for (const Listener& listener : due)
    listener.call(listener.property.first, listener.property.second);
}

} // namespace sonvel::simulated
