// Plays what the lines of its input ask for. Each is answered with "ok" and a number, or "error" and a
// reason:
//   open STREAM {OPTIONS}    the node's ID, once the server has the stream
//   pause STREAM, play STREAM, amplitude STREAM A, rename APPLICATION
// OPTIONS are signal (tone, impulses, counter or silence), frequency in Hz, amplitude, and properties of the
// stream. Ends with its input. The argument has properties of the client.
#include <pipewire/pipewire.h>
#include <spa/param/audio/raw-utils.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <iostream>
#include <map>
#include <memory>
#include <numbers>
#include <sstream>
#include <stdexcept>

namespace {

constexpr std::uint32_t kRate = 48000; // Hz
constexpr std::uint32_t kChannels = 2;
constexpr std::uint64_t kImpulsePeriod = 4800; // frames of the graph's clock
constexpr std::uint64_t kCounterPeriod = 32768;

class Stream {
 public:
  /// Takes ownership of the properties.
  Stream(pw_thread_loop* loop, pw_core* core, const std::string& name, pw_properties* options)
      : loop_(loop)
      , signal_(option(options, "signal", "tone"))
      , frequency_(std::stoul(option(options, "frequency", "1000")))
      , amplitude_(std::stof(option(options, "amplitude", "0.5"))) {
    pw_properties_set(options, PW_KEY_NODE_NAME, name.c_str());
    pw_properties_set(options, PW_KEY_MEDIA_TYPE, "Audio");
    pw_properties_set(options, PW_KEY_MEDIA_CATEGORY, "Playback");
    stream_ = pw_stream_new(core, name.c_str(), options);
    static const pw_stream_events events = {.version = PW_VERSION_STREAM_EVENTS,
                                            .state_changed = &Stream::onStateChanged,
                                            .io_changed = &Stream::onIoChanged,
                                            .process = &Stream::onProcess};
    pw_stream_add_listener(stream_, &listener_, &events, this);
    connect();
  }

  ~Stream() { pw_stream_destroy(stream_); }

  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  /// Waits until the server has created the node.
  [[nodiscard]] std::uint32_t nodeID() const {
    const char* error = nullptr;
    for (;; pw_thread_loop_wait(loop_)) {
      const pw_stream_state state = pw_stream_get_state(stream_, &error);
      if (state == PW_STREAM_STATE_ERROR) throw std::runtime_error(error != nullptr ? error : "unknown");
      if (state >= PW_STREAM_STATE_PAUSED) return pw_stream_get_node_id(stream_);
    }
  }

  void setActive(bool active) { pw_stream_set_active(stream_, active); }

  void setAmplitude(float amplitude) { amplitude_ = amplitude; }

 private:
  static std::string option(const pw_properties* options, const char* key, const char* otherwise) {
    const char* value = pw_properties_get(options, key);
    return value != nullptr ? value : otherwise;
  }

  void connect() {
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = kRate;
    format.channels = kChannels;
    format.position[0] = SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
    std::array<std::uint8_t, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    const spa_pod* parameter = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
    constexpr unsigned kFlags =
        PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS;
    if (pw_stream_connect(stream_, PW_DIRECTION_OUTPUT, PW_ID_ANY, static_cast<pw_stream_flags>(kFlags),
                          &parameter, 1) < 0)
      throw std::runtime_error("can't connect a stream");
  }

  static void onStateChanged(void* data, pw_stream_state /*old*/, pw_stream_state /*state*/,
                             const char* /*error*/) {
    pw_thread_loop_signal(static_cast<Stream*>(data)->loop_, false);
  }

  static void onIoChanged(void* data, std::uint32_t id, void* area, std::uint32_t /*size*/) {
    if (id == SPA_IO_Position) static_cast<Stream*>(data)->position_ = static_cast<spa_io_position*>(area);
  }

  // Data thread; real-time safe.
  static void onProcess(void* data) {
    auto& self = *static_cast<Stream*>(data);
    pw_buffer* buffer = pw_stream_dequeue_buffer(self.stream_);
    if (buffer == nullptr) return;
    self.fill(*buffer);
    pw_stream_queue_buffer(self.stream_, buffer);
  }

  void fill(pw_buffer& buffer) noexcept {
    spa_data& data = buffer.buffer->datas[0];
    const auto frameBytes = static_cast<std::uint32_t>(kChannels * sizeof(float));
    std::uint64_t frames = data.maxsize / frameBytes;
    if (buffer.requested != 0) frames = std::min(frames, buffer.requested);
    const spa_io_position* graph = position_;
    const std::uint64_t start = graph != nullptr ? graph->clock.position : 0;
    auto* sample = static_cast<float*>(data.data);
    for (std::uint64_t frame = 0; frame < frames; ++frame, ++count_)
      sample = std::fill_n(sample, kChannels, amplitude_ * shape(start + frame));
    data.chunk->offset = 0;
    data.chunk->stride = static_cast<std::int32_t>(frameBytes);
    data.chunk->size = static_cast<std::uint32_t>(frames) * frameBytes;
  }

  [[nodiscard]] float shape(std::uint64_t position) const noexcept {
    switch (signal_.front()) {
    case 't': // integers, so that the phase never drifts
      return static_cast<float>(std::sin(2.0 * std::numbers::pi * static_cast<double>(frequency_) *
                                         static_cast<double>(count_ % kRate) / kRate));
    case 'i':
      return position % kImpulsePeriod == 0 ? 1.0F : 0.0F;
    case 'c':
      return static_cast<float>(count_ % kCounterPeriod + 1) / static_cast<float>(kCounterPeriod);
    default:
      return 0.0F;
    }
  }

  pw_thread_loop* const loop_;
  const std::string signal_;
  const std::uint64_t frequency_;
  std::atomic<float> amplitude_;
  std::uint64_t count_ = 0; // frames played
  std::atomic<const spa_io_position*> position_ = nullptr;
  pw_stream* stream_ = nullptr;
  spa_hook listener_{};
};

struct Player {
  pw_thread_loop* loop = nullptr;
  pw_core* core = nullptr;
  std::map<std::string, std::unique_ptr<Stream>> streams;

  /// Renames the program, not a stream.
  void rename(const std::string& name) const {
    const spa_dict_item item{PW_KEY_APP_NAME, name.c_str()};
    const spa_dict properties{.flags = 0, .n_items = 1, .items = &item};
    pw_client_update_properties(pw_core_get_client(core), &properties);
  }

  std::uint32_t perform(const std::string& line) {
    std::istringstream words(line);
    std::string verb;
    std::string name;
    words >> verb >> name;
    float amplitude = 0.0F;
    if (verb == "open") {
      std::string options;
      std::getline(words, options);
      auto& stream = streams[name];
      stream = std::make_unique<Stream>(loop, core, name, pw_properties_new_string(options.c_str()));
      return stream->nodeID();
    }
    if (verb == "amplitude" && words >> amplitude)
      streams.at(name)->setAmplitude(amplitude);
    else if (verb == "pause" || verb == "play")
      streams.at(name)->setActive(verb == "play");
    else if (verb == "rename")
      rename(name);
    else
      throw std::invalid_argument("no such request");
    return 0;
  }
};

} // namespace

int main(int argc, char** argv) {
  pw_init(nullptr, nullptr);
  Player player;
  player.loop = pw_thread_loop_new(nullptr, nullptr);
  pw_context* context = pw_context_new(pw_thread_loop_get_loop(player.loop),
                                       pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0);
  pw_properties* properties = pw_properties_new_string(argc > 1 ? argv[1] : "");
  if (pw_properties_get(properties, PW_KEY_APP_NAME) == nullptr)
    pw_properties_set(properties, PW_KEY_APP_NAME, "tone-player");
  player.core = pw_context_connect(context, properties, 0);
  if (player.core == nullptr) return 1;
  pw_thread_loop_start(player.loop);
  for (std::string line; std::getline(std::cin, line);) {
    pw_thread_loop_lock(player.loop);
    try {
      std::cout << "ok " << player.perform(line) << std::endl;
    } catch (const std::exception& error) {
      std::cout << "error " << line << ": " << error.what() << std::endl;
    }
    pw_thread_loop_unlock(player.loop);
  }
  pw_thread_loop_lock(player.loop);
  player.streams.clear();
  pw_thread_loop_unlock(player.loop);
  pw_thread_loop_stop(player.loop);
  pw_context_destroy(context);
  pw_thread_loop_destroy(player.loop);
}
