#include "session/graph.h"

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace sonvel::session {

std::string_view GraphObject::property(const std::string& key) const {
  const auto found = properties.find(key);
  return found == properties.end() ? std::string_view{} : std::string_view{found->second};
}

const GraphObject* Graph::node(std::string_view name) const {
  const auto found = std::ranges::find_if(objects, [name](const GraphObject& object) {
    return object.type == "Node" && object.property(PW_KEY_NODE_NAME) == name;
  });
  return found == objects.end() ? nullptr : &*found;
}

std::string Graph::metadataValue(std::string_view name, std::uint32_t subject, std::string_view key) const {
  const auto found = std::ranges::find_if(metadata, [&](const MetadataEntry& entry) {
    return entry.metadata == name && entry.subject == subject && entry.key == key;
  });
  return found == metadata.end() ? std::string{} : found->value;
}

std::string Graph::defaultSink() const {
  // {"name":"Speakers"}, with or without blanks
  const std::string value = metadataValue("default", PW_ID_CORE, "default.audio.sink");
  const std::string::size_type colon = value.find(':');
  if (colon == std::string::npos) return {};
  const std::string::size_type begin = value.find('"', colon);
  const std::string::size_type end = value.find('"', begin + 1);
  return end == std::string::npos ? std::string{} : value.substr(begin + 1, end - begin - 1);
}

namespace {

struct BoundMetadata {
  std::uint32_t id = 0;
  std::string name;
  pw_metadata* proxy = nullptr;
  spa_hook listener{};
  std::vector<MetadataEntry>* entries = nullptr;

  static int onProperty(void* data, std::uint32_t subject, const char* key, const char* /*type*/,
                        const char* value) {
    const auto& self = *static_cast<BoundMetadata*>(data);
    const auto isSame = [&](const MetadataEntry& entry) {
      return entry.metadata == self.name && entry.subject == subject && (key == nullptr || entry.key == key);
    };
    std::erase_if(*self.entries, isSame);
    if (key != nullptr && value != nullptr) self.entries->push_back({self.name, subject, key, value});
    return 0;
  }
};

const pw_metadata_events kMetadataEvents = {.version = PW_VERSION_METADATA_EVENTS,
                                            .property = &BoundMetadata::onProperty};

} // namespace

class GraphConnection::Implementation {
 public:
  explicit Implementation(const std::string& socketPath) {
    pw_init(nullptr, nullptr);
    loop_ = pw_loop_new(nullptr);
    context_ = pw_context_new(loop_, nullptr, 0);
    if (context_ != nullptr)
      core_ = pw_context_connect(
          context_,
          pw_properties_new(PW_KEY_REMOTE_NAME, socketPath.c_str(), PW_KEY_APP_NAME, "session", nullptr), 0);
    if (core_ == nullptr) {
      dismantle();
      throw std::runtime_error("can't connect to " + socketPath);
    }
    static const pw_core_events coreEvents = {.version = PW_VERSION_CORE_EVENTS,
                                              .done = &Implementation::onDone,
                                              .error = &Implementation::onError};
    pw_core_add_listener(core_, &coreListener_, &coreEvents, this);
    registry_ = pw_core_get_registry(core_, PW_VERSION_REGISTRY, 0);
    static const pw_registry_events registryEvents = {.version = PW_VERSION_REGISTRY_EVENTS,
                                                      .global = &Implementation::onGlobal,
                                                      .global_remove = &Implementation::onGlobalRemove};
    pw_registry_add_listener(registry_, &registryListener_, &registryEvents, this);
  }

  ~Implementation() { dismantle(); }

  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  [[nodiscard]] const Graph& graph() const noexcept { return graph_; }

  // Brings all that the server has to tell; a second trip what is in the metadata that the first one found.
  void synchronize(Deadline deadline) {
    makeRoundTrip(deadline);
    settle(deadline);
  }

  // Waits for metadata that was found and hasn't answered yet. A server that is left before that tells nobody
  // of changes in it any more.
  void settle(Deadline deadline) {
    while (bindsMetadata_)
      makeRoundTrip(deadline);
  }

  // Handles the next events; false at the deadline.
  bool iterate(Deadline deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    pw_loop_enter(loop_);
    pw_loop_iterate(loop_, static_cast<int>(left.count()));
    pw_loop_leave(loop_);
    if (!error_.empty()) throw std::runtime_error("PipeWire: " + error_);
    return true;
  }

  void createAdapter(const std::map<std::string, std::string>& properties) {
    pw_properties* list = pw_properties_new(nullptr, nullptr);
    for (const auto& [key, value] : properties)
      pw_properties_set(list, key.c_str(), value.c_str());
    void* proxy =
        pw_core_create_object(core_, "adapter", PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, &list->dict, 0);
    pw_properties_free(list);
    if (proxy == nullptr) throw std::runtime_error("can't create a node");
    created_.push_back(static_cast<pw_proxy*>(proxy));
  }

  void destroy(std::uint32_t id) { pw_registry_destroy(registry_, id); }

  void setPermissions(std::uint32_t client, std::uint32_t object, std::uint32_t mask) {
    auto* proxy = static_cast<pw_client*>(
        pw_registry_bind(registry_, client, PW_TYPE_INTERFACE_Client, PW_VERSION_CLIENT, 0));
    const pw_permission permission = PW_PERMISSION_INIT(object, mask);
    pw_client_update_permissions(proxy, 1, &permission);
    pw_proxy_destroy(proxyOf(proxy));
  }

  void setMetadata(std::string_view name, std::uint32_t subject, const std::string& key,
                   const std::string& type, const std::string& value) {
    const auto found =
        std::ranges::find_if(metadata_, [name](const auto& bound) { return bound->name == name; });
    if (found == metadata_.end()) throw std::runtime_error("no metadata " + std::string(name));
    const bool removes = value.empty();
    pw_metadata_set_property((*found)->proxy, subject, key.c_str(), removes ? nullptr : type.c_str(),
                             removes ? nullptr : value.c_str());
  }

 private:
  void makeRoundTrip(Deadline deadline) {
    bindsMetadata_ = false;
    const int sequence = pw_core_sync(core_, PW_ID_CORE, 0);
    while (!done_ || *done_ != sequence)
      if (!iterate(deadline)) throw std::runtime_error("PipeWire does not answer");
  }

  static void onDone(void* data, std::uint32_t id, int sequence) {
    if (id == PW_ID_CORE) static_cast<Implementation*>(data)->done_ = sequence;
  }

  static void onError(void* data, std::uint32_t id, int /*sequence*/, int result, const char* message) {
    if (id == PW_ID_CORE && result == -EPIPE) static_cast<Implementation*>(data)->error_ = message;
  }

  static void onGlobal(void* data, std::uint32_t id, std::uint32_t /*permissions*/, const char* type,
                       std::uint32_t /*version*/, const spa_dict* properties) {
    auto& self = *static_cast<Implementation*>(data);
    const std::string fullType(type);
    GraphObject object{.id = id, .type = fullType.substr(fullType.rfind(':') + 1), .properties = {}};
    const spa_dict_item* item = nullptr;
    if (properties != nullptr) spa_dict_for_each(item, properties) object.properties[item->key] = item->value;
    if (object.type == "Metadata") self.bindMetadata(object);
    self.graph_.objects.push_back(std::move(object));
  }

  static void onGlobalRemove(void* data, std::uint32_t id) {
    auto& self = *static_cast<Implementation*>(data);
    std::erase_if(self.graph_.objects, [id](const GraphObject& object) { return object.id == id; });
    const auto bound =
        std::ranges::find_if(self.metadata_, [id](const auto& each) { return each->id == id; });
    if (bound == self.metadata_.end()) return;
    std::erase_if(self.graph_.metadata, [&](const auto& entry) { return entry.metadata == (*bound)->name; });
    release(**bound);
    self.metadata_.erase(bound);
  }

  void bindMetadata(const GraphObject& object) {
    auto bound = std::make_unique<BoundMetadata>();
    bound->id = object.id;
    bound->name = object.property(PW_KEY_METADATA_NAME);
    bound->entries = &graph_.metadata;
    bound->proxy = static_cast<pw_metadata*>(
        pw_registry_bind(registry_, object.id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0));
    pw_metadata_add_listener(bound->proxy, &bound->listener, &kMetadataEvents, bound.get());
    metadata_.push_back(std::move(bound));
    bindsMetadata_ = true;
  }

  static pw_proxy* proxyOf(void* object) noexcept { return static_cast<pw_proxy*>(object); }

  static void release(BoundMetadata& bound) noexcept {
    spa_hook_remove(&bound.listener);
    pw_proxy_destroy(proxyOf(bound.proxy));
  }

  void dismantle() noexcept {
    for (const auto& bound : metadata_)
      release(*bound);
    for (pw_proxy* proxy : created_)
      pw_proxy_destroy(proxy);
    if (registry_ != nullptr) {
      spa_hook_remove(&registryListener_);
      pw_proxy_destroy(proxyOf(registry_));
    }
    if (core_ != nullptr) {
      spa_hook_remove(&coreListener_);
      pw_core_disconnect(core_);
    }
    if (context_ != nullptr) pw_context_destroy(context_);
    if (loop_ != nullptr) pw_loop_destroy(loop_);
  }

  pw_loop* loop_ = nullptr;
  pw_context* context_ = nullptr;
  pw_core* core_ = nullptr;
  pw_registry* registry_ = nullptr;
  spa_hook coreListener_{};
  spa_hook registryListener_{};
  std::vector<std::unique_ptr<BoundMetadata>> metadata_;
  std::vector<pw_proxy*> created_;
  Graph graph_;
  bool bindsMetadata_ = false; // since the last round trip began
  std::optional<int> done_;
  std::string error_;
};

GraphConnection::GraphConnection(const std::string& socketPath)
    : implementation_(std::make_unique<Implementation>(socketPath)) {}

GraphConnection::~GraphConnection() = default;

Graph GraphConnection::snapshot(Deadline deadline) {
  implementation_->synchronize(deadline);
  return implementation_->graph();
}

bool GraphConnection::waitFor(const std::function<bool(const Graph&)>& wanted, Deadline deadline) {
  implementation_->synchronize(deadline);
  while (!wanted(implementation_->graph()))
    if (!implementation_->iterate(deadline)) return false;
  implementation_->settle(deadline);
  return true;
}

void GraphConnection::createAdapter(const std::map<std::string, std::string>& properties) {
  implementation_->createAdapter(properties);
}

void GraphConnection::destroy(std::uint32_t id) {
  implementation_->destroy(id);
}

void GraphConnection::setPermissions(std::uint32_t client, std::uint32_t object, std::uint32_t mask) {
  implementation_->setPermissions(client, object, mask);
}

void GraphConnection::setMetadata(std::string_view name, std::uint32_t subject, const std::string& key,
                                  const std::string& type, const std::string& value) {
  implementation_->setMetadata(name, subject, key, type, value);
}

} // namespace sonvel::session
