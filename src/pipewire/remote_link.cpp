#include "pipewire/remote_link.h"

#include "pipewire/graph_log.h"

namespace sonvel::pipewire {

namespace {

pw_proxy* ask(pw_core* core, std::uint32_t outputPort, std::uint32_t inputPort, LinkKind kind) {
  const auto properties =
      toProperties({{PW_KEY_LINK_OUTPUT_PORT, std::to_string(outputPort)},
                    {PW_KEY_LINK_INPUT_PORT, std::to_string(inputPort)},
                    {PW_KEY_LINK_PASSIVE, kind == LinkKind::passing ? "true" : "false"},
                    {PW_KEY_OBJECT_LINGER, kind == LinkKind::lasting ? "true" : "false"}});
  return static_cast<pw_proxy*>(pw_core_create_object(core, "link-factory", PW_TYPE_INTERFACE_Link,
                                                      PW_VERSION_LINK, &properties->dict, 0));
}

} // namespace

RemoteLink::RemoteLink(pw_core* core, std::uint32_t outputPort, std::uint32_t inputPort, LinkKind kind,
                       std::function<void()> changed)
    : proxy_(ask(core, outputPort, inputPort, kind), "link", changed)
    , changed_(std::move(changed)) {
  if (proxy_.isGone()) return;
  static const pw_link_events events = [] {
    pw_link_events made{};
    made.version = PW_VERSION_LINK_EVENTS;
    made.info = [](void* self, const pw_link_info* info) { static_cast<RemoteLink*>(self)->onInfo(info); };
    return made;
  }();
  pw_link_add_listener(fromProxy<pw_link>(proxy_.handle()), hook_.get(), &events, this);
}

OwnObject::State RemoteLink::state() const {
  if (proxy_.isGone()) return proxy_.state();
  return isNegotiated_ ? State::ready : State::asked;
}

void RemoteLink::onInfo(const pw_link_info* info) {
  if (info->state == PW_LINK_STATE_ERROR) {
    logRefusal("link %u to %u: %s", info->output_port_id, info->input_port_id,
               info->error == nullptr ? "broken" : info->error);
    proxy_.setState(State::failed);
    return;
  }
  const bool wasNegotiated = isNegotiated_;
  isNegotiated_ = info->state >= PW_LINK_STATE_PAUSED;
  if (isNegotiated_ != wasNegotiated) changed_();
}

} // namespace sonvel::pipewire
