#include "session/listener.h"

#include "session/analysis.h"
#include "session/recorder.h"
#include "session/sample_queue.h"

#include <pipewire/filter.h>
#include <pipewire/pipewire.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <stdexcept>

namespace sonvel::session {

namespace {

constexpr std::chrono::seconds kPatience{20};
constexpr std::uint32_t kNone = SPA_ID_INVALID;

struct Channel {
  const char* name;
  void* filterPort = nullptr;
  std::uint32_t monitorPort = kNone; // global ids
  std::uint32_t inputPort = kNone;
  pw_proxy* link = nullptr;
  spa_hook linkListener{};
  bool linked = false;
};

class LoopLock {
 public:
  explicit LoopLock(pw_thread_loop* loop) noexcept
      : loop_(loop) {
    pw_thread_loop_lock(loop_);
  }

  ~LoopLock() { pw_thread_loop_unlock(loop_); }

  LoopLock(const LoopLock&) = delete;
  LoopLock& operator=(const LoopLock&) = delete;

 private:
  pw_thread_loop* loop_;
};

} // namespace

class Listener::Implementation {
 public:
  Implementation(const std::string& socketPath, std::string sink, Wake wake)
      : sink_(std::move(sink))
      , wake_(wake) {
    pw_init(nullptr, nullptr);
    loop_ = pw_thread_loop_new("listener", nullptr);
    try {
      connect(socketPath);
    } catch (...) {
      dismantle();
      throw;
    }
  }

  ~Implementation() { dismantle(); }

  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  [[nodiscard]] const Recorder& recorder() const noexcept { return recorder_; }

  [[nodiscard]] bool linked() const noexcept { return linked_; }

  void waitUntilLinked() const {
    const bool passive = wake_ == Wake::passive;
    const LoopLock lock(loop_);
    timespec limit{};
    pw_thread_loop_get_time(loop_, &limit, std::chrono::nanoseconds(kPatience).count());
    while (!linked_ || (!passive && recorder_.mark() == 0))
      if (pw_thread_loop_timed_wait_full(loop_, &limit) != 0)
        throw std::runtime_error("can't listen to " + sink_);
  }

 private:
  void connect(const std::string& socketPath) {
    context_ = pw_context_new(pw_thread_loop_get_loop(loop_),
                              pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0);
    if (context_ != nullptr)
      core_ = pw_context_connect(
          context_,
          pw_properties_new(PW_KEY_REMOTE_NAME, socketPath.c_str(), PW_KEY_APP_NAME, "listener", nullptr), 0);
    if (core_ == nullptr) throw std::runtime_error("can't connect to " + socketPath);
    blocksQueued_ = pw_loop_add_event(pw_thread_loop_get_loop(loop_), &Implementation::onBlocksQueued, this);
    makeFilter();
    registry_ = pw_core_get_registry(core_, PW_VERSION_REGISTRY, 0);
    static const pw_registry_events events = {.version = PW_VERSION_REGISTRY_EVENTS,
                                              .global = &Implementation::onGlobal,
                                              .global_remove = &Implementation::onGlobalRemove};
    pw_registry_add_listener(registry_, &registryListener_, &events, this);
    pw_thread_loop_start(loop_);
  }

  void makeFilter() {
    filter_ = pw_filter_new(core_, "listener",
                            pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Monitor",
                                              PW_KEY_NODE_NAME, ("listener." + sink_).c_str(), nullptr));
    static const pw_filter_events events = {.version = PW_VERSION_FILTER_EVENTS,
                                            .process = &Implementation::onProcess};
    pw_filter_add_listener(filter_, &filterListener_, &events, this);
    for (Channel& channel : channels_)
      channel.filterPort = pw_filter_add_port(filter_, PW_DIRECTION_INPUT, PW_FILTER_PORT_FLAG_MAP_BUFFERS, 0,
                                              pw_properties_new(PW_KEY_FORMAT_DSP, "32 bit float mono audio",
                                                                PW_KEY_PORT_NAME, channel.name, nullptr),
                                              nullptr, 0);
    if (pw_filter_connect(filter_, PW_FILTER_FLAG_RT_PROCESS, nullptr, 0) < 0)
      throw std::runtime_error("can't connect a filter");
  }

  // The data thread, once for each graph cycle. Real-time safe.
  static void onProcess(void* data, spa_io_position* position) {
    auto& self = *static_cast<Implementation*>(data);
    const std::uint64_t frames = position->clock.duration;
    const auto* left = self.input(0, frames);
    const auto* right = self.input(1, frames);
    const bool hearing = left != nullptr && right != nullptr && frames <= SampleBlock::kMaxFrames;
    SampleBlock* block = hearing ? self.queue_.beginWrite() : nullptr;
    if (block == nullptr) {
      self.lost_ = self.expectedPosition_ != 0;
      return;
    }
    block->position = position->clock.position;
    block->frames = frames;
    block->afterLoss =
        self.lost_ || (self.expectedPosition_ != 0 && position->clock.position != self.expectedPosition_);
    std::copy_n(left, frames, block->left.begin());
    std::copy_n(right, frames, block->right.begin());
    self.queue_.endWrite();
    self.lost_ = false;
    self.expectedPosition_ = position->clock.position + frames;
    pw_loop_signal_event(pw_thread_loop_get_loop(self.loop_), self.blocksQueued_);
  }

  [[nodiscard]] const float* input(std::size_t channel, std::uint64_t frames) const noexcept {
    return static_cast<const float*>(
        pw_filter_get_dsp_buffer(channels_[channel].filterPort, static_cast<std::uint32_t>(frames)));
  }

  // Everything below runs on the loop's thread, or under its lock.

  static void onBlocksQueued(void* data, std::uint64_t /*count*/) {
    auto& self = *static_cast<Implementation*>(data);
    while (const SampleBlock* block = self.queue_.beginRead()) {
      self.recorder_.append(*block);
      self.queue_.endRead();
    }
    pw_thread_loop_signal(self.loop_, false);
  }

  static void onGlobal(void* data, std::uint32_t id, std::uint32_t /*permissions*/, const char* type,
                       std::uint32_t /*version*/, const spa_dict* properties) {
    auto& self = *static_cast<Implementation*>(data);
    if (properties == nullptr) return;
    const auto property = [properties](const char* key) {
      const char* value = spa_dict_lookup(properties, key);
      return std::string(value != nullptr ? value : "");
    };
    if (spa_streq(type, PW_TYPE_INTERFACE_Node) && property(PW_KEY_NODE_NAME) == self.sink_)
      self.sinkId_ = id;
    if (!spa_streq(type, PW_TYPE_INTERFACE_Port)) return;

    const std::string node = property(PW_KEY_NODE_ID);
    for (Channel& channel : self.channels_) {
      if (node == std::to_string(pw_filter_get_node_id(self.filter_)) &&
          property(PW_KEY_PORT_NAME) == channel.name)
        channel.inputPort = id;
      if (node == std::to_string(self.sinkId_) && property(PW_KEY_PORT_MONITOR) == "true" &&
          property(PW_KEY_AUDIO_CHANNEL) == channel.name)
        channel.monitorPort = id;
    }
    self.makeMissingLinks();
  }

  static void onGlobalRemove(void* data, std::uint32_t id) {
    auto& self = *static_cast<Implementation*>(data);
    if (id == self.sinkId_) self.sinkId_ = kNone;
    for (Channel& channel : self.channels_) {
      if (channel.monitorPort != id) continue;
      channel.monitorPort = kNone;
      self.removeLink(channel);
    }
  }

  // The server's word on a link: from "paused" on it carries sound whenever the graph runs.
  static void onLinkInfo(void* data, const pw_link_info* info) {
    auto& self = *static_cast<Implementation*>(data);
    for (Channel& channel : self.channels_)
      if (channel.link != nullptr && pw_proxy_get_bound_id(channel.link) == info->id)
        channel.linked = info->state >= PW_LINK_STATE_PAUSED;
    self.updateLinked();
  }

  void updateLinked() {
    linked_ = std::ranges::all_of(channels_, &Channel::linked);
    pw_thread_loop_signal(loop_, false);
  }

  void removeLink(Channel& channel) {
    if (channel.link == nullptr) return;
    spa_hook_remove(&channel.linkListener);
    pw_proxy_destroy(channel.link);
    channel.link = nullptr;
    channel.linked = false;
    updateLinked();
  }

  void makeMissingLinks() {
    static const pw_link_events events = {.version = PW_VERSION_LINK_EVENTS,
                                          .info = &Implementation::onLinkInfo};
    for (Channel& channel : channels_) {
      if (channel.link != nullptr || channel.monitorPort == kNone || channel.inputPort == kNone) continue;
      pw_properties* properties = pw_properties_new(PW_KEY_OBJECT_LINGER, "false", nullptr);
      pw_properties_setf(properties, PW_KEY_LINK_OUTPUT_PORT, "%u", channel.monitorPort);
      pw_properties_setf(properties, PW_KEY_LINK_INPUT_PORT, "%u", channel.inputPort);
      if (wake_ == Wake::passive) pw_properties_set(properties, PW_KEY_LINK_PASSIVE, "true");
      channel.link = static_cast<pw_proxy*>(pw_core_create_object(
          core_, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, &properties->dict, 0));
      pw_properties_free(properties);
      pw_proxy_add_object_listener(channel.link, &channel.linkListener, &events, this);
    }
  }

  void dismantle() noexcept {
    if (loop_ == nullptr) return;
    pw_thread_loop_stop(loop_);
    for (Channel& channel : channels_)
      removeLink(channel);
    if (filter_ != nullptr) pw_filter_destroy(filter_);
    if (registry_ != nullptr) {
      spa_hook_remove(&registryListener_);
      void* proxy = registry_;
      pw_proxy_destroy(static_cast<pw_proxy*>(proxy));
    }
    if (core_ != nullptr) pw_core_disconnect(core_);
    if (blocksQueued_ != nullptr) pw_loop_destroy_source(pw_thread_loop_get_loop(loop_), blocksQueued_);
    if (context_ != nullptr) pw_context_destroy(context_);
    pw_thread_loop_destroy(loop_);
  }

  std::string sink_;
  Wake wake_;
  pw_thread_loop* loop_ = nullptr;
  pw_context* context_ = nullptr;
  pw_core* core_ = nullptr;
  pw_registry* registry_ = nullptr;
  pw_filter* filter_ = nullptr;
  spa_source* blocksQueued_ = nullptr;
  spa_hook registryListener_{};
  spa_hook filterListener_{};
  std::uint32_t sinkId_ = kNone;
  std::array<Channel, 2> channels_ = {Channel{.name = "FL"}, Channel{.name = "FR"}};
  std::atomic<bool> linked_ = false;
  SampleQueue queue_;
  Recorder recorder_;
  // the data thread's own
  std::uint64_t expectedPosition_ = 0; // 0: nothing heard yet
  bool lost_ = false;
};

Listener::Listener(const PrivateSession& session, const std::string& sink, Wake wake)
    : implementation_(std::make_unique<Implementation>(session.socketPath().string(), sink, wake)) {
  implementation_->waitUntilLinked();
}

Listener::~Listener() = default;

std::uint64_t Listener::mark() const {
  return implementation_->recorder().mark();
}

Recording Listener::since(std::uint64_t mark) const {
  return implementation_->recorder().since(mark);
}

bool Listener::waitForFrames(std::uint64_t mark, std::uint64_t frames, Milliseconds within) const {
  const Recorder& recorder = implementation_->recorder();
  return recorder.waitUntil([&] { return recorder.mark() >= mark + frames; }, within);
}

double Listener::toneAmplitude(double frequency, int channel, std::size_t frames) const {
  return session::toneAmplitude(implementation_->recorder().tail(channel, frames), frequency);
}

bool Listener::waitForTone(Tone tone, double toleranceDB, Milliseconds within) const {
  const Recorder& recorder = implementation_->recorder();
  const std::uint64_t start = mark();
  const auto isAsTold = [&](int channel) {
    const double amplitude = toneAmplitude(tone.frequency, channel);
    return std::abs(decibels(amplitude / tone.amplitude)) <= toleranceDB;
  };
  return recorder.waitUntil(
      [&] { return recorder.mark() >= start + kAnalysedFrames && isAsTold(0) && isAsTold(1); }, within);
}

bool Listener::waitForExactZeros(Milliseconds duration, Milliseconds within) const {
  const Recorder& recorder = implementation_->recorder();
  const std::uint64_t start = mark();
  const auto wanted = static_cast<std::size_t>(duration.count() * kSampleRate / 1000);
  const auto isSilent = [&](int channel) { return trailingZeros(recorder.tail(channel, wanted)) >= wanted; };
  return recorder.waitUntil([&] { return recorder.mark() >= start + wanted && isSilent(0) && isSilent(1); },
                            within);
}

std::uint64_t Listener::losses() const {
  return implementation_->recorder().losses();
}

bool Listener::linked() const {
  return implementation_->linked();
}

} // namespace sonvel::session
