// listener NAME FILE: records the input of its node NAME into a file that readers map, until it is killed.
#include <pipewire/filter.h>
#include <pipewire/pipewire.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <sys/mman.h>

namespace {

/// The recorded frames, and the places of lost frames. Both are ring buffers.
struct Recording {
  struct Break {
    std::uint64_t frame;    ///< number of frames written before it
    std::uint64_t position; ///< of the next frame, on the graph's clock
  };

  struct Frame {
    float left;
    float right;
  };

  std::atomic<std::uint64_t> frameCount;
  std::atomic<std::uint64_t> breakCount; ///< the start counts as the first
  std::array<Break, 255> breaks;
  std::array<Frame, 1U << 22U> frames; ///< 87 seconds at 48 kHz
};

static_assert(offsetof(Recording, frames) == 4096);

struct Listener {
  Recording* recording = nullptr;
  std::array<void*, 2> ports{};
  std::uint64_t expectedPosition = 0; // used by the data thread

  // Data thread, once per cycle of the graph; real-time safe.
  static void onProcess(void* data, spa_io_position* position) {
    auto& self = *static_cast<Listener*>(data);
    const std::uint64_t count = position->clock.duration;
    const float* left = self.input(0, count);
    const float* right = self.input(1, count);
    if (left == nullptr || right == nullptr) return;
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

  [[nodiscard]] const float* input(std::size_t side, std::uint64_t count) const noexcept {
    return static_cast<const float*>(
        pw_filter_get_dsp_buffer(ports.at(side), static_cast<std::uint32_t>(count)));
  }
};

Recording* mapRecording(const char* path) {
  const int descriptor = open(path, O_RDWR | O_CLOEXEC);
  void* memory = mmap(nullptr, sizeof(Recording), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  return memory != MAP_FAILED ? static_cast<Recording*>(memory) : nullptr;
}

} // namespace

int main(int argc, char** argv) {
  pw_init(nullptr, nullptr);
  Listener listener;
  if (argc != 3 || (listener.recording = mapRecording(argv[2])) == nullptr) return 2;
  pw_main_loop* loop = pw_main_loop_new(nullptr);
  pw_context* context = pw_context_new(pw_main_loop_get_loop(loop),
                                       pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0);
  pw_core* core = pw_context_connect(context, nullptr, 0);
  if (core == nullptr) return 1;
  pw_filter* filter = pw_filter_new(core, argv[1],
                                    pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY,
                                                      "Monitor", PW_KEY_NODE_NAME, argv[1], nullptr));
  static const pw_filter_events events = {.version = PW_VERSION_FILTER_EVENTS,
                                          .process = &Listener::onProcess};
  spa_hook hook{};
  pw_filter_add_listener(filter, &hook, &events, &listener);
  constexpr std::array kPortNames = {"left", "right"};
  for (std::size_t side = 0; side < kPortNames.size(); ++side)
    listener.ports.at(side) =
        pw_filter_add_port(filter, PW_DIRECTION_INPUT, PW_FILTER_PORT_FLAG_MAP_BUFFERS, 0,
                           pw_properties_new(PW_KEY_FORMAT_DSP, "32 bit float mono audio", PW_KEY_PORT_NAME,
                                             kPortNames.at(side), nullptr),
                           nullptr, 0);
  pw_filter_connect(filter, PW_FILTER_FLAG_RT_PROCESS, nullptr, 0);
  pw_main_loop_run(loop);
}
