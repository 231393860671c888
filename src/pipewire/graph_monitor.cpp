#include "pipewire/graph_monitor.h"

#include "pipewire/graph_watches.h"
#include "pipewire/object_reading.h"
#include "pipewire/pod_reading.h"

#include <algorithm>
#include <cstring>

namespace sonvel::pipewire {

GraphMonitor::GraphMonitor(pw_core* core, Graph& graph, std::function<void()> changed)
    : graph_(graph)
    , changed_(std::move(changed))
    , loop_(pw_context_get_main_loop(pw_core_get_context(core)))
    , registry_(asProxy(pw_core_get_registry(core, PW_VERSION_REGISTRY, 0))) {
  static const pw_registry_events events = [] {
    pw_registry_events made{};
    made.version = PW_VERSION_REGISTRY_EVENTS;
    made.global = [](void* self, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                     const spa_dict* properties) {
      static_cast<GraphMonitor*>(self)->added(id, type, properties);
    };
    made.global_remove = [](void* self, std::uint32_t id) { static_cast<GraphMonitor*>(self)->removed(id); };
    return made;
  }();
  pw_registry_add_listener(fromProxy<pw_registry>(registry_), registryHook_.get(), &events, this);
}

GraphMonitor::~GraphMonitor() {
  graph_ = {.lastChoiceSerial = graph_.lastChoiceSerial, .revision = graph_.revision + 1};
}

void GraphMonitor::added(GlobalID id, const char* type, const spa_dict* properties) {
  auto* registry = fromProxy<pw_registry>(registry_);
  const auto is = [type](const char* wanted) { return std::strcmp(type, wanted) == 0; };
  if (is(PW_TYPE_INTERFACE_Client)) {
    graph_.clients[id] = {.serial = numberOf(properties, PW_KEY_OBJECT_SERIAL).value_or(0)};
    watches_[id] = std::make_unique<ClientWatch>(registry, id, graph_, changed_);
    if (MetadataWatch* watch = metadataWatch()) watch->onNewClient();
  } else if (is(PW_TYPE_INTERFACE_Node)) {
    graph_.nodes[id] = readNode(properties);
    graph_.nodes[id].isUnread = true;
    graph_.nodes[id].wasLinked =
        std::ranges::any_of(graph_.links, [id](const auto& link) { return link.second.outputNode == id; });
    watches_[id] = std::make_unique<NodeWatch>(registry, id, graph_, changed_);
  } else if (is(PW_TYPE_INTERFACE_Port)) {
    graph_.ports[id] = readPort(properties);
  } else if (is(PW_TYPE_INTERFACE_Link)) {
    const Link& link = graph_.links[id] = readLink(properties);
    const auto stream = graph_.nodes.find(link.outputNode);
    if (stream != graph_.nodes.end()) stream->second.wasLinked = true;
  } else if (is(PW_TYPE_INTERFACE_Device)) {
    graph_.cards[id] = {};
    watches_[id] = std::make_unique<CardWatch>(registry, id, graph_, changed_);
  } else if (is(PW_TYPE_INTERFACE_Metadata) && textOf(properties, PW_KEY_METADATA_NAME) == "default") {
    graph_.hasMetadata = true;
    metadataID_ = id;
    watches_[id] = std::make_unique<MetadataWatch>(loop_, registry, id, graph_, changed_);
  } else if (is(PW_TYPE_INTERFACE_Core)) {
    graph_.isServerHidden = false;
  } else {
    return;
  }
  ++graph_.revision;
  changed_();
}

void GraphMonitor::removed(GlobalID id) {
  watches_.erase(id);
  if (MetadataWatch* watch = metadataWatch()) watch->forget(id);
  if (id == PW_ID_CORE) graph_.isServerHidden = true;
  graph_.clients.erase(id);
  graph_.nodes.erase(id);
  graph_.ports.erase(id);
  graph_.links.erase(id);
  graph_.cards.erase(id);
  graph_.metadata.erase(id);
  if (metadataID_ == id) {
    metadataID_.reset();
    graph_.hasMetadata = false;
    graph_.metadata.clear();
    graph_.defaultSinkName.clear();
  }
  ++graph_.revision;
  changed_();
}

pw_node* GraphMonitor::node(GlobalID id) const {
  const auto watch = watches_.find(id);
  return watch == watches_.end() || !graph_.nodes.contains(id) ? nullptr
                                                               : fromProxy<pw_node>(watch->second->proxy());
}

pw_device* GraphMonitor::card(GlobalID id) const {
  const auto watch = watches_.find(id);
  return watch == watches_.end() || !graph_.cards.contains(id) ? nullptr
                                                               : fromProxy<pw_device>(watch->second->proxy());
}

GraphMonitor::MetadataWatch* GraphMonitor::metadataWatch() const {
  const auto watch = metadataID_ ? watches_.find(*metadataID_) : watches_.end();
  return watch == watches_.end() ? nullptr : static_cast<MetadataWatch*>(watch->second.get());
}

pw_metadata* GraphMonitor::metadata() const {
  const MetadataWatch* watch = metadataWatch();
  return watch == nullptr ? nullptr : fromProxy<pw_metadata>(watch->proxy());
}

void GraphMonitor::write(GlobalID subject, const MetadataWrite& write) {
  if (metadata() == nullptr) return;
  metadataWatch()->mirror().wrote(subject, write);
  pw_metadata_set_property(metadata(), subject, write.key.c_str(),
                           write.value ? write.value->type.c_str() : nullptr,
                           write.value ? write.value->value.c_str() : nullptr);
}

void GraphMonitor::destroy(GlobalID id) {
  ++graph_.revision;
  graph_.links.erase(id); // the ID may be reused before the answer comes, so request the removal only once
  pw_registry_destroy(fromProxy<pw_registry>(registry_), id);
}

} // namespace sonvel::pipewire
