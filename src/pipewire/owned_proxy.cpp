#include "pipewire/owned_proxy.h"

#include "pipewire/graph_log.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace sonvel::pipewire {

PropertiesHandle toProperties(const ObjectProperties& properties) {
  PropertiesHandle made(pw_properties_new(nullptr, nullptr));
  for (const auto& [key, value] : properties)
    pw_properties_set(made.get(), key.c_str(), value.c_str());
  return made;
}

OwnedProxy::OwnedProxy(pw_proxy* proxy, std::string name, std::function<void()> changed)
    : proxy_(proxy)
    , name_(std::move(name))
    , changed_(std::move(changed)) {
  if (!proxy_) {
    logRefusal("%s: %s", name_.c_str(), std::strerror(errno));
    state_ = OwnObject::State::failed;
    return;
  }
  static const pw_proxy_events events = [] {
    pw_proxy_events made{};
    made.version = PW_VERSION_PROXY_EVENTS;
    made.bound = [](void* self, std::uint32_t) {
      static_cast<OwnedProxy*>(self)->setState(OwnObject::State::ready);
    };
    made.removed = [](void* self) { static_cast<OwnedProxy*>(self)->setState(OwnObject::State::lost); };
    made.error = [](void* self, int, int result, const char* message) {
      auto* owned = static_cast<OwnedProxy*>(self);
      logRefusal("%s refused: %s (%s)", owned->name_.c_str(), message, std::strerror(-result));
      owned->setState(OwnObject::State::failed);
    };
    return made;
  }();
  pw_proxy_add_listener(proxy_.get(), hook_.get(), &events, this);
}

void OwnedProxy::setState(OwnObject::State state) {
  if (isGone()) return;
  state_ = state;
  changed_();
}

} // namespace sonvel::pipewire
