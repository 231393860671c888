#include "pipewire/graph_summary.h"

#include "pipewire/handles.h"

#include <string_view>

namespace sonvel::pipewire {

namespace {

using MainLoopHandle = std::unique_ptr<pw_main_loop, Destroy<pw_main_loop_destroy>>;

/// Returns "Link" for "PipeWire:Interface:Link".
std::string kindOf(const char* type) {
  const std::string_view text(type);
  return std::string(text.substr(text.rfind(':') + 1));
}

/// One reading, from connecting to the server's answer.
class Reading {
 public:
  Reading()
      : loop_(pw_main_loop_new(nullptr))
      , context_(pw_context_new(pw_main_loop_get_loop(loop_.get()), nullptr, 0)) {}

  std::optional<GraphSummary> run(std::chrono::milliseconds patience) {
    core_.reset(pw_context_connect(context_.get(), nullptr, 0));
    if (!core_) return std::nullopt;
    listen();
    sync_ = pw_core_sync(core_.get(), PW_ID_CORE, 0);
    pw_loop* const loop = pw_main_loop_get_loop(loop_.get());
    spa_source* const timer = pw_loop_add_timer(
        loop, [](void* self, std::uint64_t) { static_cast<Reading*>(self)->quit(); }, this);
    const timespec after{.tv_sec = patience.count() / 1000, .tv_nsec = patience.count() % 1000 * 1'000'000};
    pw_loop_update_timer(loop, timer, const_cast<timespec*>(&after), nullptr, false);
    pw_main_loop_run(loop_.get());
    pw_loop_destroy_source(loop, timer);
    return isComplete_ ? std::optional(summary_) : std::nullopt;
  }

 private:
  void listen() {
    static const pw_core_events coreEvents = [] {
      pw_core_events made{};
      made.version = PW_VERSION_CORE_EVENTS;
      made.info = [](void* self, const pw_core_info* info) {
        static_cast<Reading*>(self)->summary_.serverVersion = info->version;
      };
      made.done = [](void* self, std::uint32_t, int sequence) {
        static_cast<Reading*>(self)->done(sequence);
      };
      made.error = [](void* self, std::uint32_t, int, int, const char*) {
        static_cast<Reading*>(self)->quit();
      };
      return made;
    }();
    static const pw_registry_events registryEvents = [] {
      pw_registry_events made{};
      made.version = PW_VERSION_REGISTRY_EVENTS;
      made.global = [](void* self, std::uint32_t, std::uint32_t, const char* type, std::uint32_t,
                       const spa_dict* properties) { static_cast<Reading*>(self)->add(type, properties); };
      return made;
    }();
    pw_core_add_listener(core_.get(), coreHook_.get(), &coreEvents, this);
    registry_.reset(asProxy(pw_core_get_registry(core_.get(), PW_VERSION_REGISTRY, 0)));
    pw_registry_add_listener(fromProxy<pw_registry>(registry_), registryHook_.get(), &registryEvents, this);
  }

  void add(const char* type, const spa_dict* properties) {
    const char* const mediaClass =
        properties != nullptr ? spa_dict_lookup(properties, PW_KEY_MEDIA_CLASS) : nullptr;
    ++summary_.counts[mediaClass != nullptr ? std::string(mediaClass) : kindOf(type)];
    const char* const name = properties != nullptr ? spa_dict_lookup(properties, PW_KEY_NODE_NAME) : nullptr;
    if (name != nullptr && std::string_view(name).starts_with("sonvel-")) ++summary_.ownNodes;
  }

  void done(int sequence) {
    isComplete_ = sequence == sync_;
    if (isComplete_) quit();
  }

  void quit() { pw_main_loop_quit(loop_.get()); }

  MainLoopHandle loop_;
  ContextHandle context_;
  CoreHandle core_;
  ProxyHandle registry_;
  Hook coreHook_;
  Hook registryHook_;
  GraphSummary summary_;
  int sync_ = 0;
  bool isComplete_ = false;
};

} // namespace

std::optional<GraphSummary> readGraphSummary(std::chrono::milliseconds patience) {
  pw_init(nullptr, nullptr);
  return Reading().run(patience);
}

std::string soundLibraryVersion() {
  return pw_get_library_version();
}

} // namespace sonvel::pipewire
