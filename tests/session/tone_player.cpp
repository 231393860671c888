// Plays what its input tells. One request a line, its words apart by tabs; each is answered by "ok" and a
// text, or by "error" and the reason:
//   pid
//   open STREAM [signal=KIND] [frequency=HZ] [amplitude=A] [period=FRAMES] [rate=HZ] [channels=N] [corked=1]
//        [property.NAME=VALUE]...           answers the node's id once the server has the stream
//   cork STREAM / uncork STREAM / amplitude STREAM A / close STREAM
// It ends with its input. Arguments: --helper plays in a child process; NAME=VALUE is a property of the
// client.
#include "signal_source.h"

#include <pipewire/pipewire.h>
#include <spa/param/audio/raw-utils.h>
#include <span>

#include <array>
#include <csignal>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace sonvel::session {

namespace {

using Words = std::vector<std::string>;

void answer(const std::string& line) {
  std::cout << line << std::endl;
}

const std::map<std::string, SignalSource::Kind, std::less<>> kKinds = {
    {"tone", SignalSource::Kind::tone},
    {"impulses", SignalSource::Kind::impulses},
    {"counter", SignalSource::Kind::counter},
    {"silence", SignalSource::Kind::silence}};

// One stream. Lives on the main loop; fill() alone runs on the data thread.
class PlayingStream {
 public:
  PlayingStream(pw_core* core, const std::string& name, std::span<const std::string> options) {
    properties_ = pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback",
                                    PW_KEY_NODE_NAME, name.c_str(), PW_KEY_MEDIA_NAME, name.c_str(), nullptr);
    for (const std::string& option : options)
      set(option.substr(0, option.find('=')), option.substr(option.find('=') + 1));
    stream_ = pw_stream_new(core, name.c_str(), properties_);
    static const pw_stream_events events = {.version = PW_VERSION_STREAM_EVENTS,
                                            .state_changed = &PlayingStream::onStateChanged,
                                            .io_changed = &PlayingStream::onIoChanged,
                                            .process = &PlayingStream::onProcess};
    pw_stream_add_listener(stream_, &listener_, &events, this);
    connect();
  }

  ~PlayingStream() { pw_stream_destroy(stream_); }

  PlayingStream(const PlayingStream&) = delete;
  PlayingStream& operator=(const PlayingStream&) = delete;

  void setActive(bool active) { pw_stream_set_active(stream_, active); }

  void setAmplitude(float amplitude) { source_.amplitude = amplitude; }

 private:
  void set(const std::string& name, const std::string& value) {
    constexpr std::string_view kProperty = "property.";
    if (name == "signal") {
      source_.kind = kKinds.at(value);
    } else if (name == "frequency") {
      source_.frequency = std::stoi(value);
    } else if (name == "amplitude") {
      source_.amplitude = std::stof(value);
    } else if (name == "period") {
      source_.period = std::stoul(value);
    } else if (name == "rate") {
      source_.rate = std::stoi(value);
    } else if (name == "channels") {
      channels_ = std::stoul(value);
    } else if (name == "corked") {
      corked_ = value == "1";
    } else if (name.starts_with(kProperty)) {
      pw_properties_set(properties_, name.substr(kProperty.size()).c_str(), value.c_str());
    } else {
      throw std::invalid_argument("no option " + name);
    }
  }

  void connect() {
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = static_cast<std::uint32_t>(source_.rate);
    format.channels = static_cast<std::uint32_t>(channels_);
    constexpr std::array<std::uint32_t, 6> kSurround = {SPA_AUDIO_CHANNEL_FL, SPA_AUDIO_CHANNEL_FR,
                                                        SPA_AUDIO_CHANNEL_FC, SPA_AUDIO_CHANNEL_LFE,
                                                        SPA_AUDIO_CHANNEL_RL, SPA_AUDIO_CHANNEL_RR};
    for (std::size_t i = 0; i < channels_ && i < kSurround.size(); ++i)
      format.position[i] = kSurround[i];
    if (channels_ == 1) format.position[0] = SPA_AUDIO_CHANNEL_MONO;

    std::array<std::uint8_t, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    std::array<const spa_pod*, 1> parameters = {
        spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format)};
    unsigned flags = PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS;
    if (corked_) flags |= PW_STREAM_FLAG_INACTIVE;
    if (pw_stream_connect(stream_, PW_DIRECTION_OUTPUT, PW_ID_ANY, static_cast<pw_stream_flags>(flags),
                          parameters.data(), parameters.size()) < 0)
      throw std::runtime_error("can't connect a stream");
  }

  static void onStateChanged(void* data, pw_stream_state /*old*/, pw_stream_state state, const char* error) {
    auto& self = *static_cast<PlayingStream*>(data);
    if (self.answered_ || (state != PW_STREAM_STATE_ERROR && state < PW_STREAM_STATE_PAUSED)) return;
    self.answered_ = true;
    if (state == PW_STREAM_STATE_ERROR) {
      answer(std::string("error ") + (error != nullptr ? error : "unknown"));
    } else {
      answer("ok " + std::to_string(pw_stream_get_node_id(self.stream_)));
    }
  }

  static void onIoChanged(void* data, std::uint32_t id, void* area, std::uint32_t /*size*/) {
    if (id == SPA_IO_Position)
      static_cast<PlayingStream*>(data)->position_ = static_cast<spa_io_position*>(area);
  }

  static void onProcess(void* data) {
    auto& self = *static_cast<PlayingStream*>(data);
    pw_buffer* buffer = pw_stream_dequeue_buffer(self.stream_);
    if (buffer == nullptr) return;
    self.fill(*buffer);
    pw_stream_queue_buffer(self.stream_, buffer);
  }

  void fill(pw_buffer& buffer) noexcept {
    spa_data& data = buffer.buffer->datas[0];
    const std::size_t frameBytes = channels_ * sizeof(float);
    std::size_t frames = data.maxsize / frameBytes;
    if (buffer.requested != 0) frames = std::min<std::size_t>(frames, buffer.requested);
    const spa_io_position* graph = position_;
    const std::uint64_t position = graph != nullptr ? graph->clock.position : 0;
    float* sample = static_cast<float*>(data.data);
    for (std::size_t frame = 0; frame < frames; ++frame)
      sample = std::fill_n(sample, channels_, source_.next(position + frame));
    data.chunk->offset = 0;
    data.chunk->stride = static_cast<std::int32_t>(frameBytes);
    data.chunk->size = static_cast<std::uint32_t>(frames * frameBytes);
  }

  pw_properties* properties_ = nullptr; // the stream's once there is one
  pw_stream* stream_ = nullptr;
  spa_hook listener_{};
  SignalSource source_;
  std::size_t channels_ = 2;
  bool corked_ = false;
  bool answered_ = false;
  std::atomic<const spa_io_position*> position_ = nullptr;
};

class TonePlayer {
 public:
  explicit TonePlayer(std::span<const std::string> properties)
      : loop_(pw_main_loop_new(nullptr)) {
    context_ = pw_context_new(pw_main_loop_get_loop(loop_),
                              pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0);
    pw_properties* list = pw_properties_new(PW_KEY_APP_NAME, "tone-player", nullptr);
    for (const std::string& property : properties)
      pw_properties_set(list, property.substr(0, property.find('=')).c_str(),
                        property.substr(property.find('=') + 1).c_str());
    core_ = pw_context_connect(context_, list, 0);
    if (core_ == nullptr) throw std::runtime_error("can't connect to PipeWire");
    pw_loop_add_io(pw_main_loop_get_loop(loop_), STDIN_FILENO, SPA_IO_IN | SPA_IO_HUP, false,
                   &TonePlayer::onInput, this);
  }

  ~TonePlayer() {
    streams_.clear();
    if (core_ != nullptr) pw_core_disconnect(core_);
    pw_context_destroy(context_);
    pw_main_loop_destroy(loop_);
  }

  TonePlayer(const TonePlayer&) = delete;
  TonePlayer& operator=(const TonePlayer&) = delete;

  void run() { pw_main_loop_run(loop_); }

 private:
  static void onInput(void* data, int descriptor, std::uint32_t /*events*/) {
    auto& self = *static_cast<TonePlayer*>(data);
    std::array<char, 4096> buffer{};
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count <= 0) {
      pw_main_loop_quit(self.loop_);
      return;
    }
    self.unread_.append(buffer.data(), static_cast<std::size_t>(count));
    for (std::size_t end = 0; (end = self.unread_.find('\n')) != std::string::npos;) {
      self.handle(self.unread_.substr(0, end));
      self.unread_.erase(0, end + 1);
    }
  }

  void handle(const std::string& line) {
    Words words;
    std::istringstream stream(line);
    for (std::string word; std::getline(stream, word, '\t');)
      words.push_back(word);
    try {
      if (const std::optional<std::string> result = perform(words)) answer("ok " + *result);
    } catch (const std::exception& error) {
      answer(std::string("error ") + error.what());
    }
  }

  // The text to answer; absent when the answer comes later.
  std::optional<std::string> perform(const Words& words) {
    const std::string& verb = words.at(0);
    if (verb == "pid") return std::to_string(getpid());
    const std::string& name = words.at(1);
    if (verb == "open") {
      streams_[name] = std::make_unique<PlayingStream>(core_, name, std::span(words).subspan(2));
      return std::nullopt;
    }
    PlayingStream& stream = *streams_.at(name);
    if (verb == "close") {
      streams_.erase(name);
    } else if (verb == "amplitude") {
      stream.setAmplitude(std::stof(words.at(2)));
    } else if (verb == "cork" || verb == "uncork") {
      stream.setActive(verb == "uncork");
    } else {
      throw std::invalid_argument("no request " + verb);
    }
    return "";
  }

  pw_main_loop* loop_;
  pw_context* context_ = nullptr;
  pw_core* core_ = nullptr;
  std::map<std::string, std::unique_ptr<PlayingStream>> streams_;
  std::string unread_;
};

// Goes on in a child process; the parent ends when the child has ended.
void becomeHelper() {
  const pid_t child = fork();
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    return;
  }
  int status = 0;
  waitpid(child, &status, 0);
  _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 1);
}

} // namespace

} // namespace sonvel::session

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  if (!arguments.empty() && arguments.front() == "--helper") {
    arguments.erase(arguments.begin());
    sonvel::session::becomeHelper();
  }
  try {
    pw_init(nullptr, nullptr);
    sonvel::session::TonePlayer(arguments).run();
  } catch (const std::exception& error) {
    std::cerr << "tone-player: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
