// listener SINK FILE: writes what a sink plays, taken from its monitor, into a file with the layout of
// recording.h. Makes its links itself, and again when the sink comes back. While it listens the sink runs, so
// that silence is heard as zeros. Ends with its input or with the server.
#include "recording.h"

#include <pipewire/filter.h>
#include <pipewire/pipewire.h>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace {

using sonvel::support::Recording;

constexpr std::uint32_t kNone = SPA_ID_INVALID;

struct Channel {
  std::string_view filterPortName;
  std::uint32_t monitorPort = kNone; // global IDs
  std::uint32_t filterPort = kNone;
  pw_proxy* link = nullptr;
  void* port = nullptr;
};

struct Listener {
  std::string sink;
  Recording* recording = nullptr;
  pw_main_loop* loop = nullptr;
  pw_core* core = nullptr;
  pw_filter* filter = nullptr;
  std::uint32_t sinkID = kNone;
  std::array<Channel, 2> channels = {Channel{"left"}, Channel{"right"}};
  std::uint64_t expectedPosition = 0; // the data thread's

  // The data thread, once for each cycle of the graph; real-time safe.
  static void onProcess(void* data, spa_io_position* position) {
    auto& self = *static_cast<Listener*>(data);
    const std::uint64_t count = position->clock.duration;
    const auto* left = self.input(0, count);
    const auto* right = self.input(1, count);
    if (left == nullptr) return;
    if (right == nullptr) right = left; // a sink with one channel
    Recording& recording = *self.recording;
    const std::uint64_t written = recording.frameCount.load(std::memory_order_relaxed);
    if (position->clock.position != self.expectedPosition) {
      const std::uint64_t breakCount = recording.breakCount.load(std::memory_order_relaxed);
      recording.breaks.at(breakCount % recording.breaks.size()) = {written, position->clock.position};
      recording.breakCount.store(breakCount + 1, std::memory_order_release);
    }
    for (std::uint64_t i = 0; i < count; ++i)
      recording.frames[(written + i) % recording.frames.size()] = {left[i], right[i]};
    recording.frameCount.store(written + count, std::memory_order_release);
    self.expectedPosition = position->clock.position + count;
  }

  [[nodiscard]] const float* input(std::size_t channel, std::uint64_t count) const noexcept {
    return static_cast<const float*>(
        pw_filter_get_dsp_buffer(channels.at(channel).port, static_cast<std::uint32_t>(count)));
  }

  static void onGlobal(void* data, std::uint32_t id, std::uint32_t /*permissions*/, const char* type,
                       std::uint32_t /*version*/, const spa_dict* properties) {
    auto& self = *static_cast<Listener*>(data);
    const auto property = [properties](const char* key) -> std::string {
      const char* value = properties != nullptr ? spa_dict_lookup(properties, key) : nullptr;
      return value != nullptr ? value : "";
    };
    if (spa_streq(type, PW_TYPE_INTERFACE_Node) && property(PW_KEY_NODE_NAME) == self.sink) self.sinkID = id;
    if (!spa_streq(type, PW_TYPE_INTERFACE_Port)) return;
    const std::string node = property(PW_KEY_NODE_ID);
    const std::string channel = property(PW_KEY_AUDIO_CHANNEL);
    const bool isRight = channel == "FR" || property(PW_KEY_PORT_NAME) == "right";
    Channel& mine = self.channels.at(isRight ? 1 : 0);
    if (node == std::to_string(pw_filter_get_node_id(self.filter))) mine.filterPort = id;
    if (node == std::to_string(self.sinkID) && property(PW_KEY_PORT_MONITOR) == "true" &&
        (isRight || channel == "FL" || channel == "MONO"))
      mine.monitorPort = id;
    self.link();
  }

  static void onGlobalRemove(void* data, std::uint32_t id) {
    auto& self = *static_cast<Listener*>(data);
    if (id == self.sinkID) self.sinkID = kNone;
    for (Channel& channel : self.channels) {
      if (channel.monitorPort != id) continue;
      channel.monitorPort = kNone;
      if (channel.link != nullptr) pw_proxy_destroy(std::exchange(channel.link, nullptr));
    }
  }

  void link() {
    for (Channel& channel : channels) {
      if (channel.link != nullptr || channel.monitorPort == kNone || channel.filterPort == kNone) continue;
      pw_properties* properties = pw_properties_new(PW_KEY_OBJECT_LINGER, "false", nullptr);
      pw_properties_setf(properties, PW_KEY_LINK_OUTPUT_PORT, "%u", channel.monitorPort);
      pw_properties_setf(properties, PW_KEY_LINK_INPUT_PORT, "%u", channel.filterPort);
      channel.link = static_cast<pw_proxy*>(pw_core_create_object(
          core, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, &properties->dict, 0));
      pw_properties_free(properties);
    }
  }

  void makeFilter() {
    static const pw_filter_events events = {.version = PW_VERSION_FILTER_EVENTS,
                                            .process = &Listener::onProcess};
    static spa_hook listener;
    filter = pw_filter_new(core, "listener",
                           pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Monitor",
                                             PW_KEY_NODE_NAME, ("listener." + sink).c_str(), nullptr));
    pw_filter_add_listener(filter, &listener, &events, this);
    for (Channel& channel : channels)
      channel.port =
          pw_filter_add_port(filter, PW_DIRECTION_INPUT, PW_FILTER_PORT_FLAG_MAP_BUFFERS, 0,
                             pw_properties_new(PW_KEY_FORMAT_DSP, "32 bit float mono audio", PW_KEY_PORT_NAME,
                                               channel.filterPortName.data(), nullptr),
                             nullptr, 0);
    pw_filter_connect(filter, PW_FILTER_FLAG_RT_PROCESS, nullptr, 0);
  }

  void run() {
    makeFilter();
    static const pw_registry_events registryEvents = {.version = PW_VERSION_REGISTRY_EVENTS,
                                                      .global = &Listener::onGlobal,
                                                      .global_remove = &Listener::onGlobalRemove};
    static const pw_core_events coreEvents = {.version = PW_VERSION_CORE_EVENTS, .error = &Listener::onError};
    static spa_hook registryListener;
    static spa_hook coreListener;
    pw_core_add_listener(core, &coreListener, &coreEvents, this);
    pw_registry_add_listener(pw_core_get_registry(core, PW_VERSION_REGISTRY, 0), &registryListener,
                             &registryEvents, this);
    pw_loop_add_io(pw_main_loop_get_loop(loop), STDIN_FILENO, SPA_IO_IN | SPA_IO_HUP, false,
                   &Listener::onInput, this);
    pw_main_loop_run(loop);
    pw_filter_destroy(filter);
  }

  static void onInput(void* data, int /*descriptor*/, std::uint32_t /*events*/) {
    pw_main_loop_quit(static_cast<Listener*>(data)->loop);
  }

  static void onError(void* data, std::uint32_t id, int /*sequence*/, int result, const char* /*message*/) {
    if (id == PW_ID_CORE && result == -EPIPE) pw_main_loop_quit(static_cast<Listener*>(data)->loop);
  }
};

Recording* mapRecording(const char* path) {
  const int descriptor = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (descriptor < 0 || ftruncate(descriptor, sizeof(Recording)) != 0) return nullptr;
  void* memory = mmap(nullptr, sizeof(Recording), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  return memory != MAP_FAILED ? static_cast<Recording*>(memory) : nullptr;
}

} // namespace

int main(int argc, char** argv) {
  pw_init(nullptr, nullptr);
  Listener listener;
  if (argc != 3 || (listener.recording = mapRecording(argv[2])) == nullptr) return 2;
  listener.sink = argv[1];
  listener.loop = pw_main_loop_new(nullptr);
  pw_context* context = pw_context_new(pw_main_loop_get_loop(listener.loop),
                                       pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0);
  listener.core = pw_context_connect(context, pw_properties_new(PW_KEY_APP_NAME, "listener", nullptr), 0);
  if (listener.core == nullptr) return 1;
  listener.run();
  pw_core_disconnect(listener.core);
  pw_context_destroy(context);
  pw_main_loop_destroy(listener.loop);
}
