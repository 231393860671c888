#include "pipewire/remote_object.h"

#include "pipewire/graph_log.h"

#include <cerrno>
#include <cstring>

namespace sonvel::pipewire {

namespace {

pw_proxy* ask(pw_core* core, const char* factory, const char* type, std::uint32_t version,
              const ObjectProperties& properties) {
  const PropertiesHandle made(pw_properties_new(nullptr, nullptr));
  for (const auto& [key, value] : properties)
    pw_properties_set(made.get(), key.c_str(), value.c_str());
  return static_cast<pw_proxy*>(pw_core_create_object(core, factory, type, version, &made->dict, 0));
}

} // namespace

RemoteObject::RemoteObject(pw_core* core, const char* factory, const char* type, std::uint32_t version,
                           const ObjectProperties& properties, std::function<void()> changed)
    : proxy_(ask(core, factory, type, version, properties))
    , changed_(std::move(changed))
    , factory_(factory) {
  if (!proxy_) {
    logRefusal("%s: %s", factory, std::strerror(errno));
    state_ = State::failed;
    return;
  }
  static const pw_proxy_events events = [] {
    pw_proxy_events made{};
    made.version = PW_VERSION_PROXY_EVENTS;
    made.bound = [](void* self, std::uint32_t) { static_cast<RemoteObject*>(self)->setState(State::ready); };
    made.removed = [](void* self) { static_cast<RemoteObject*>(self)->setState(State::lost); };
    made.error = [](void* self, int, int result, const char* message) {
      auto* object = static_cast<RemoteObject*>(self);
      logRefusal("%s refused: %s (%s)", object->factory_.c_str(), message, std::strerror(-result));
      object->setState(State::failed);
    };
    return made;
  }();
  pw_proxy_add_listener(proxy_.get(), hook_.get(), &events, this);
}

void RemoteObject::setState(State state) {
  if (isGone()) return;
  state_ = state;
  changed_();
}

RemoteLink::RemoteLink(pw_core* core, std::uint32_t outputPort, std::uint32_t inputPort, LinkKind kind,
                       std::function<void()> changed)
    : RemoteObject(core, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK,
                   {{PW_KEY_LINK_OUTPUT_PORT, std::to_string(outputPort)},
                    {PW_KEY_LINK_INPUT_PORT, std::to_string(inputPort)},
                    {PW_KEY_LINK_PASSIVE, kind == LinkKind::passing ? "true" : "false"},
                    {PW_KEY_OBJECT_LINGER, kind == LinkKind::lasting ? "true" : "false"}},
                   std::move(changed)) {
  if (!proxy_) return;
  static const pw_link_events events = [] {
    pw_link_events made{};
    made.version = PW_VERSION_LINK_EVENTS;
    made.info = [](void* self, const pw_link_info* info) { static_cast<RemoteLink*>(self)->onInfo(info); };
    return made;
  }();
  pw_link_add_listener(fromProxy<pw_link>(proxy_), linkHook_.get(), &events, this);
}

OwnObject::State RemoteLink::state() const {
  if (isGone()) return RemoteObject::state();
  return isNegotiated_ ? State::ready : State::asked;
}

void RemoteLink::onInfo(const pw_link_info* info) {
  if (info->state == PW_LINK_STATE_ERROR) {
    logRefusal("link %u to %u: %s", info->output_port_id, info->input_port_id,
               info->error == nullptr ? "broken" : info->error);
    setState(State::failed);
    return;
  }
  const bool wasNegotiated = isNegotiated_;
  isNegotiated_ = info->state >= PW_LINK_STATE_PAUSED;
  if (isNegotiated_ != wasNegotiated) changed_();
}

} // namespace sonvel::pipewire
