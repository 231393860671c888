#include "pipewire/graph_watches.h"

#include "pipewire/object_reading.h"
#include "pipewire/pod_reading.h"

#include <spa/param/param.h>
#include <spa/param/props.h>
#include <spa/param/route.h>
#include <spa/pod/iter.h>
#include <spa/pod/parser.h>

#include <array>

namespace sonvel::pipewire {

GraphMonitor::ClientWatch::ClientWatch(pw_registry* registry, GlobalID id, Graph& graph,
                                       const std::function<void()>& changed)
    : Watch(registry, id, PW_TYPE_INTERFACE_Client, PW_VERSION_CLIENT, graph, changed) {
  static const pw_client_events events = [] {
    pw_client_events made{};
    made.version = PW_VERSION_CLIENT_EVENTS;
    made.info = [](void* self, const pw_client_info* info) { static_cast<ClientWatch*>(self)->onInfo(info); };
    return made;
  }();
  pw_client_add_listener(fromProxy<pw_client>(proxy_), hook_.get(), &events, this);
}

void GraphMonitor::ClientWatch::onInfo(const pw_client_info* info) {
  const spa_dict* properties = info->props;
  if (properties == nullptr) return;
  readClient(properties, graph_.clients[id_]);
  ++graph_.revision;
  changed_();
}

GraphMonitor::NodeWatch::NodeWatch(pw_registry* registry, GlobalID id, Graph& graph,
                                   const std::function<void()>& changed)
    : Watch(registry, id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, graph, changed) {
  static const pw_node_events events = [] {
    pw_node_events made{};
    made.version = PW_VERSION_NODE_EVENTS;
    made.info = [](void* self, const pw_node_info* info) { static_cast<NodeWatch*>(self)->onInfo(info); };
    made.param = [](void* self, int, std::uint32_t param, std::uint32_t, std::uint32_t,
                    const spa_pod* value) { static_cast<NodeWatch*>(self)->onParam(param, value); };
    return made;
  }();
  auto* node = fromProxy<pw_node>(proxy_);
  pw_node_add_listener(node, hook_.get(), &events, this);
  if (graph_.nodes.at(id_).kind == NodeKind::sink) {
    std::array<std::uint32_t, 1> params{SPA_PARAM_Props};
    pw_node_subscribe_params(node, params.data(), params.size());
  }
}

/// Later updates of a node may hold only some of its properties; missing ones stay unchanged.
void GraphMonitor::NodeWatch::readProperties(Node& node, const spa_dict* properties) {
  const auto note = [&](const char* key, bool forbids) {
    if (!textOf(properties, key)) return;
    if (isTrue(properties, key) == forbids)
      forbidding_.insert(key);
    else
      forbidding_.erase(key);
  };
  note(PW_KEY_NODE_DONT_RECONNECT, true);
  note("node.dont-move", true);
  note("node.dont-fallback", true); // it would end instead of playing elsewhere
  note(PW_KEY_NODE_AUTOCONNECT, false);
  node.cannotBeMoved = !forbidding_.empty();
  if (textOf(properties, "pulse.attr.tlength"))
    node.isPulseAnnounced = true; // in the server's answer to the program
  if (auto target = textOf(properties, PW_KEY_TARGET_OBJECT)) node.ownTarget = std::move(*target);
  if (const auto card = numberOf(properties, PW_KEY_DEVICE_ID)) node.card = card;
  if (const auto output = numberOf(properties, "card.profile.device"))
    node.cardProfileDevice = static_cast<std::int32_t>(*output);
}

void GraphMonitor::NodeWatch::onInfo(const pw_node_info* info) {
  Node& node = graph_.nodes[id_];
  node.isRunning = info->state == PW_NODE_STATE_RUNNING;
  node.isUnread = false;
  if (info->props != nullptr) readProperties(node, info->props);
  changed_();
}

void GraphMonitor::NodeWatch::onParam(std::uint32_t param, const spa_pod* value) {
  if (param != SPA_PARAM_Props) return;
  auto volumes = channelVolumesOf(value);
  if (volumes.empty()) return;
  graph_.nodes[id_].channelVolumes = std::move(volumes);
  changed_();
}

GraphMonitor::CardWatch::CardWatch(pw_registry* registry, GlobalID id, Graph& graph,
                                   const std::function<void()>& changed)
    : Watch(registry, id, PW_TYPE_INTERFACE_Device, PW_VERSION_DEVICE, graph, changed) {
  static const pw_device_events events = [] {
    pw_device_events made{};
    made.version = PW_VERSION_DEVICE_EVENTS;
    made.param = [](void* self, int, std::uint32_t param, std::uint32_t index, std::uint32_t,
                    const spa_pod* value) { static_cast<CardWatch*>(self)->onParam(param, index, value); };
    return made;
  }();
  auto* device = fromProxy<pw_device>(proxy_);
  pw_device_add_listener(device, hook_.get(), &events, this);
  std::array<std::uint32_t, 1> params{SPA_PARAM_Route};
  pw_device_subscribe_params(device, params.data(), params.size());
}

void GraphMonitor::CardWatch::onParam(std::uint32_t param, std::uint32_t index, const spa_pod* value) {
  if (param != SPA_PARAM_Route) return;
  std::int32_t route = 0;
  std::int32_t output = 0;
  const spa_pod* props = nullptr;
  if (spa_pod_parse_object(value, SPA_TYPE_OBJECT_ParamRoute, nullptr, SPA_PARAM_ROUTE_index,
                           SPA_POD_Int(&route), SPA_PARAM_ROUTE_device, SPA_POD_Int(&output),
                           SPA_PARAM_ROUTE_props, SPA_POD_OPT_Pod(&props)) < 0)
    return;
  auto& routes = graph_.cards[id_].routes;
  if (index == 0) routes.clear(); // each enumeration starts with index 0
  std::erase_if(routes, [output](const Route& old) { return old.profileDevice == output; });
  routes.push_back({.index = route, .profileDevice = output, .channelVolumes = channelVolumesOf(props)});
  changed_();
}

GraphMonitor::MetadataWatch::MetadataWatch(pw_loop* loop, pw_registry* registry, GlobalID id, Graph& graph,
                                           const std::function<void()>& changed)
    : Watch(registry, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, graph, changed)
    , mirror_(graph)
    , reader_(loop, registry, id, graph, mirror_, [this] {
      updateDefaultSink();
      changed_();
    }) {
  static const pw_metadata_events events = [] {
    pw_metadata_events made{};
    made.version = PW_VERSION_METADATA_EVENTS;
    made.property = [](void* self, std::uint32_t subject, const char* key, const char* type,
                       const char* value) {
      return static_cast<MetadataWatch*>(self)->onProperty(subject, key, type, value);
    };
    return made;
  }();
  pw_metadata_add_listener(fromProxy<pw_metadata>(proxy_), hook_.get(), &events, this);
  reader_.readSoon(); // other programs bind it now too
}

int GraphMonitor::MetadataWatch::onProperty(std::uint32_t subject, const char* key, const char* type,
                                            const char* value) {
  if (key == nullptr)
    mirror_.forget(subject);
  else if (value == nullptr)
    mirror_.reported(subject, key, std::nullopt);
  else
    mirror_.reported(subject, key, MetadataValue{type == nullptr ? "" : type, value});
  updateDefaultSink();
  changed_();
  return 0;
}

void GraphMonitor::MetadataWatch::updateDefaultSink() {
  if (const MetadataValue* sink = graph_.metadataOf(PW_ID_CORE, "default.audio.sink"))
    graph_.defaultSinkName = nameInJSON(sink->value.c_str());
  else
    graph_.defaultSinkName.clear();
}

} // namespace sonvel::pipewire
