#include "engine/change_listeners.h"

namespace sonvel {

ChangeListeners::ChangeListeners(AudioHardware& hardware, OnChange onChange)
    : hardware_(hardware)
    , onChange_(std::move(onChange)) {}

ChangeListeners::~ChangeListeners() {
  for (const auto& [property, id] : listeners_)
    hardware_.removePropertyListener(id);
}

bool ChangeListeners::listenTo(const std::set<Property>& properties) {
  std::erase_if(listeners_, [&](const auto& listener) {
    if (properties.contains(listener.first)) return false;
    hardware_.removePropertyListener(listener.second);
    return true;
  });
  bool isAnyNew = false;
  for (const auto& property : properties) {
    if (listeners_.contains(property)) continue;
    PropertyListenerID id = 0;
    const auto& [object, selector] = property;
    const PropertyAddress address{selector, scope::kGlobal, kElementMain};
    const auto onChange = [onChange = onChange_](AudioObjectID, const PropertyAddress& changed) {
      onChange(changed.selector);
    };
    if (hardware_.addPropertyListener(object, address, onChange, id) != kNoError) continue;
    listeners_.emplace(property, id);
    isAnyNew = true;
  }
  return isAnyNew;
}

void ChangeListeners::forgetObjects() {
  std::set<Property> ofTheSystem;
  for (const auto& [property, id] : listeners_)
    if (property.first == kSystemObject) ofTheSystem.insert(property);
  (void)listenTo(ofTheSystem);
}

} // namespace sonvel
