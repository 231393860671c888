#include "pipewire/io_filter.h"

#include "pipewire/graph_log.h"
#include "pipewire/server_quirks.h"

#include <cerrno>
#include <cstring>

namespace sonvel::pipewire {

namespace {

constexpr std::array<const char*, kStereo> kChannels{"FL", "FR"};

} // namespace

IOFilter::IOFilter(pw_core* core, const std::string& name, const std::string& description, IOProcBlock block,
                   std::function<void()> changed)
    : changed_(std::move(changed)) {
  cycle_.block = std::move(block);
  pw_properties* properties = pw_properties_new(PW_KEY_NODE_NAME, name.c_str(), PW_KEY_NODE_DESCRIPTION,
                                                description.c_str(), PW_KEY_NODE_VIRTUAL, "true", nullptr);
  if (quirks::nodesCanBePassive()) pw_properties_set(properties, PW_KEY_NODE_PASSIVE, "true");
  filter_.reset(pw_filter_new(core, name.c_str(), properties)); // takes ownership of the properties
  if (!filter_) {
    logRefusal("filter %s: %s", name.c_str(), std::strerror(errno));
    state_ = State::failed;
    return;
  }
  static const pw_filter_events events = [] {
    pw_filter_events made{};
    made.version = PW_VERSION_FILTER_EVENTS;
    made.process = [](void* self, spa_io_position* position) {
      runIOCycle(&static_cast<IOFilter*>(self)->cycle_, position);
    };
    made.state_changed = [](void* self, pw_filter_state old, pw_filter_state state, const char* error) {
      // If the server removes its node, a filter gets no error but becomes unconnected.
      const bool isLost = state == PW_FILTER_STATE_UNCONNECTED && old != PW_FILTER_STATE_UNCONNECTED;
      if (state == PW_FILTER_STATE_ERROR) logRefusal("filter: %s", error == nullptr ? "broken" : error);
      if (state == PW_FILTER_STATE_ERROR || isLost)
        static_cast<IOFilter*>(self)->setState(isLost ? State::lost : State::failed);
    };
    return made;
  }();
  pw_filter_add_listener(filter_.get(), hook_.get(), &events, this);
  for (std::size_t side = 0; side < kStereo; ++side) {
    cycle_.inputPorts.at(side) = addPort(PW_DIRECTION_INPUT, kChannels.at(side));
    cycle_.outputPorts.at(side) = addPort(PW_DIRECTION_OUTPUT, kChannels.at(side));
  }
  const int result = pw_filter_connect(filter_.get(), PW_FILTER_FLAG_RT_PROCESS, nullptr, 0);
  if (result >= 0) return;
  logRefusal("filter %s: %s", name.c_str(), std::strerror(-result));
  state_ = State::failed;
}

IOFilter::~IOFilter() {
  isClosing_ = true;
  // Disconnect before the listener is removed: this waits for the real-time thread.
  if (filter_) pw_filter_disconnect(filter_.get());
}

void IOFilter::setState(State state) {
  if (isClosing_) return;
  state_ = state;
  changed_();
}

void* IOFilter::addPort(pw_direction direction, const char* channel) {
  const std::string name = std::string(direction == PW_DIRECTION_INPUT ? "input_" : "output_") + channel;
  pw_properties* properties =
      pw_properties_new(PW_KEY_FORMAT_DSP, "32 bit float mono audio", PW_KEY_PORT_NAME, name.c_str(),
                        PW_KEY_AUDIO_CHANNEL, channel, nullptr);
  // size of our data in a port; the library returns its address, which identifies the port
  constexpr std::size_t ownBytesInPort = sizeof(void*);
  return pw_filter_add_port(filter_.get(), direction, PW_FILTER_PORT_FLAG_MAP_BUFFERS, ownBytesInPort,
                            properties, nullptr, 0);
}

} // namespace sonvel::pipewire
