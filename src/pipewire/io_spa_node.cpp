#include "pipewire/io_spa_node.h"

#include "pipewire/node_params.h"

#include <pipewire/keys.h>
#include <spa/node/utils.h>
#include <spa/param/latency-utils.h>
#include <spa/pod/filter.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace sonvel::pipewire {

IOSpaNode::IOSpaNode(Kind kind, std::size_t channelCount)
    : kind_(kind)
    , channelCount_(channelCount)
    , hasPorts_(kind == Kind::filter) {
  spa_hook_list_init(&hooks_);
  node_.iface = {.type = SPA_TYPE_INTERFACE_Node, .version = SPA_VERSION_NODE, .cb = {&methods(), this}};
  params_ = {spa_param_info{SPA_PARAM_EnumFormat, SPA_PARAM_INFO_READ},
             spa_param_info{SPA_PARAM_PortConfig, SPA_PARAM_INFO_READWRITE}};
  info_.max_input_ports = static_cast<std::uint32_t>(channelCount);
  info_.max_output_ports = info_.max_input_ports;
  info_.flags = SPA_NODE_FLAG_RT;
  info_.params = params_.data();
  info_.n_params = kind == Kind::sink ? static_cast<std::uint32_t>(params_.size()) : 0;
  forEachPort([this](spa_direction direction, std::uint32_t port) { preparePort(direction, port); });
  rewire([&](IOWiring& wiring) { wiring.channelCount = channelCount; });
}

void IOSpaNode::preparePort(spa_direction direction, std::uint32_t channel) {
  Port& port = ports_.at(direction).at(channel);
  const char* const label = channelLabel(channelCount_, channel);
  port.name = std::string(direction == SPA_DIRECTION_INPUT ? "input_" : "output_") + label;
  port.latencies = {spa_latency_info{.direction = SPA_DIRECTION_INPUT},
                    spa_latency_info{.direction = SPA_DIRECTION_OUTPUT}};
  port.params = {spa_param_info{SPA_PARAM_EnumFormat, SPA_PARAM_INFO_READ},
                 spa_param_info{SPA_PARAM_Format, SPA_PARAM_INFO_WRITE}, spa_param_info{SPA_PARAM_Buffers, 0},
                 spa_param_info{SPA_PARAM_IO, SPA_PARAM_INFO_READ},
                 spa_param_info{SPA_PARAM_Latency, SPA_PARAM_INFO_READWRITE}};
  port.items = {spa_dict_item{PW_KEY_FORMAT_DSP, "32 bit float mono audio"},
                spa_dict_item{PW_KEY_PORT_NAME, port.name.c_str()},
                spa_dict_item{PW_KEY_AUDIO_CHANNEL, label}};
  port.properties = {.n_items = static_cast<std::uint32_t>(port.items.size()), .items = port.items.data()};
  port.hasFormat = false;
  port.info.props = &port.properties;
  port.info.params = port.params.data();
  port.info.n_params = kParamCount;
}

void IOSpaNode::run(std::shared_ptr<const IOProcBlock> block) {
  rewire([&](IOWiring& wiring) { wiring.block = std::move(block); });
}

void IOSpaNode::addListener(spa_hook* hook, const spa_node_events* events, void* data) {
  spa_hook_list others;
  spa_hook_list_isolate(&hooks_, &others, hook, events, data);
  announceNode();
  announcePorts();
  spa_hook_list_join(&hooks_, &others);
}

void IOSpaNode::announceNode() {
  info_.change_mask = SPA_NODE_CHANGE_MASK_FLAGS | SPA_NODE_CHANGE_MASK_PARAMS;
  spa_node_emit_info(&hooks_, &info_);
}

void IOSpaNode::announcePort(spa_direction direction, std::uint32_t port) {
  spa_port_info& info = ports_.at(direction).at(port).info;
  info.change_mask = SPA_PORT_CHANGE_MASK_FLAGS | SPA_PORT_CHANGE_MASK_PROPS | SPA_PORT_CHANGE_MASK_PARAMS;
  spa_node_emit_port_info(&hooks_, direction, port, &info);
}

void IOSpaNode::announcePorts() {
  if (hasPorts_)
    forEachPort([this](spa_direction direction, std::uint32_t port) { announcePort(direction, port); });
}

/// A session manager waits until the ports have come. One that configures them again, after its restart,
/// therefore gets new ones.
void IOSpaNode::configurePorts() {
  if (hasPorts_) {
    rewire([](IOWiring& wiring) { wiring.inputs = wiring.outputs = {}; }); // the library frees their memory
    forEachPort([this](spa_direction direction, std::uint32_t port) {
      spa_node_emit_port_info(&hooks_, direction, port, nullptr);
      preparePort(direction, port);
    });
  }
  hasPorts_ = true;
  announcePorts();
}

void IOSpaNode::emitParam(int sequence, std::uint32_t id, std::uint32_t index, const spa_pod* param,
                          const spa_pod* filter) {
  PodBuilder builder;
  spa_result_node_params result{.id = id, .index = index, .next = index + 1, .param = nullptr};
  if (spa_pod_filter(builder.get(), &result.param, param, filter) < 0) return; // does not suit the filter
  spa_node_emit_result(&hooks_, sequence, 0, SPA_RESULT_TYPE_NODE_PARAMS, &result);
}

IOSpaNode::Result IOSpaNode::enumParam(int sequence, std::uint32_t id, std::uint32_t start,
                                       std::uint32_t limit, const spa_pod* filter) {
  PodBuilder builder;
  const spa_pod* param = kind_ == Kind::sink ? sinkParam(builder, id, channelCount_) : nullptr;
  if (param == nullptr) return -ENOENT;
  if (start == 0 && limit > 0) emitParam(sequence, id, 0, param, filter);
  return 0;
}

IOSpaNode::Result IOSpaNode::enumPortParam(int sequence, spa_direction direction, std::uint32_t port,
                                           std::uint32_t id, std::uint32_t start, std::uint32_t limit,
                                           const spa_pod* filter) {
  if (!hasPort(direction, port)) return -EINVAL;
  const Port& found = ports_.at(direction).at(port);
  if (id == SPA_PARAM_Format && !found.hasFormat) return 0;
  std::uint32_t emitted = 0;
  const std::uint32_t count = id == SPA_PARAM_Latency ? 2 : 1;
  for (std::uint32_t index = start; index < count && emitted < limit; ++index, ++emitted) {
    PodBuilder builder;
    const spa_pod* param = id == SPA_PARAM_Latency
                               ? spa_latency_build(builder.get(), id, &found.latencies.at(index))
                               : monoPortParam(builder, id);
    if (param == nullptr) return -ENOENT;
    emitParam(sequence, id, index, param, filter);
  }
  return 0;
}

IOSpaNode::Result IOSpaNode::setPortParam(spa_direction direction, std::uint32_t port, std::uint32_t id,
                                          const spa_pod* param) {
  if (!hasPort(direction, port)) return -EINVAL;
  if (id == SPA_PARAM_Latency) return setLatency(direction, port, param);
  if (id != SPA_PARAM_Format) return -ENOENT;
  setFormat(direction, port, param != nullptr);
  return 0;
}

void IOSpaNode::setFormat(spa_direction direction, std::uint32_t port, bool isSet) {
  rewire([&](IOWiring& wiring) { wired(wiring, direction, port).bufferCount = 0; });
  Port& changed = ports_.at(direction).at(port);
  changed.hasFormat = isSet;
  changed.params[kFormat].flags = isSet ? SPA_PARAM_INFO_READWRITE : SPA_PARAM_INFO_WRITE;
  changed.params[kBuffers].flags = isSet ? SPA_PARAM_INFO_READ : 0;
  announcePort(direction, port);
}

/// The node has no delay of its own: what lies beyond its outputs is passed on to those who play into it, and
/// the other way round.
IOSpaNode::Result IOSpaNode::setLatency(spa_direction direction, std::uint32_t port, const spa_pod* param) {
  if (param == nullptr) return 0;
  spa_latency_info told;
  if (const Result result = spa_latency_parse(param, &told); result < 0) return result;
  if (told.direction == direction) return 0; // what we told ourselves
  ports_.at(direction).at(port).latencies.at(told.direction) = told;
  spa_latency_info whole;
  spa_latency_info_combine_start(&whole, told.direction);
  for (std::size_t channel = 0; channel < channelCount_; ++channel)
    spa_latency_info_combine(&whole, &ports_.at(direction).at(channel).latencies.at(told.direction));
  spa_latency_info_combine_finish(&whole);
  for (std::uint32_t channel = 0; channel < channelCount_; ++channel) {
    Port& opposite = ports_.at(told.direction).at(channel);
    if (spa_latency_info_compare(&opposite.latencies.at(told.direction), &whole) == 0) continue;
    opposite.latencies.at(told.direction) = whole;
    opposite.params[kLatency].flags ^= SPA_PARAM_INFO_SERIAL; // a new value
    if (hasPorts_) announcePort(told.direction, channel);
  }
  return 0;
}

IOSpaNode::Result IOSpaNode::useBuffers(spa_direction direction, std::uint32_t port, spa_buffer** buffers,
                                        std::uint32_t count) {
  if (!hasPort(direction, port)) return -EINVAL;
  if (count > kMostBuffers) return -ENOSPC;
  for (std::uint32_t i = 0; i < count; ++i)
    if (buffers[i]->n_datas == 0 || buffers[i]->datas[0].data == nullptr || buffers[i]->datas[0].maxsize == 0)
      return -EINVAL; // not in our memory, or to be allocated by us
  rewire([&](IOWiring& wiring) {
    IOPort& changed = wired(wiring, direction, port);
    std::copy_n(buffers, count, changed.buffers.begin());
    changed.bufferCount = count;
  });
  return 0;
}

/// The library's table of functions; `self` is the node.
const spa_node_methods& IOSpaNode::methods() {
  static const spa_node_methods table = [] {
    static constexpr auto of = [](void* self) -> IOSpaNode& { return *static_cast<IOSpaNode*>(self); };
    spa_node_methods made{};
    made.version = SPA_VERSION_NODE_METHODS;
    made.add_listener = [](void* self, spa_hook* hook, const spa_node_events* events, void* data) {
      of(self).addListener(hook, events, data);
      return 0;
    };
    made.set_callbacks = [](void*, const spa_node_callbacks*, void*) { return 0; }; // for drivers
    made.sync = [](void* self, int sequence) {
      spa_node_emit_result(&of(self).hooks_, sequence, 0, 0, nullptr);
      return 0;
    };
    made.enum_params = [](void* self, int sequence, std::uint32_t id, std::uint32_t start,
                          std::uint32_t limit, const spa_pod* filter) {
      return of(self).enumParam(sequence, id, start, limit, filter);
    };
    made.set_param = [](void* self, std::uint32_t id, std::uint32_t, const spa_pod*) {
      if (id == SPA_PARAM_PortConfig && of(self).kind_ == Kind::sink) of(self).configurePorts();
      return 0; // the format is always the same
    };
    made.set_io = [](void* self, std::uint32_t id, void* data, std::size_t) {
      if (id == SPA_IO_Position)
        of(self).rewire([&](IOWiring& wiring) { wiring.position = static_cast<spa_io_position*>(data); });
      return 0;
    };
    made.send_command = [](void*, const spa_command*) { return 0; };
    made.add_port = [](void*, spa_direction, std::uint32_t, const spa_dict*) { return -ENOTSUP; };
    made.remove_port = [](void*, spa_direction, std::uint32_t) { return -ENOTSUP; };
    made.port_enum_params = [](void* self, int sequence, spa_direction direction, std::uint32_t port,
                               std::uint32_t id, std::uint32_t start, std::uint32_t limit,
                               const spa_pod* filter) {
      return of(self).enumPortParam(sequence, direction, port, id, start, limit, filter);
    };
    made.port_set_param = [](void* self, spa_direction direction, std::uint32_t port, std::uint32_t id,
                             std::uint32_t, const spa_pod* param) {
      return of(self).setPortParam(direction, port, id, param);
    };
    made.port_use_buffers = [](void* self, spa_direction direction, std::uint32_t port, std::uint32_t,
                               spa_buffer** buffers, std::uint32_t count) {
      return of(self).useBuffers(direction, port, buffers, count);
    };
    made.port_set_io = [](void* self, spa_direction direction, std::uint32_t port, std::uint32_t id,
                          void* data, std::size_t) {
      if (!of(self).hasPort(direction, port)) return -EINVAL;
      if (id != SPA_IO_Buffers) return -ENOENT;
      of(self).rewire(
          [&](IOWiring& wiring) { wired(wiring, direction, port).io = static_cast<spa_io_buffers*>(data); });
      return 0;
    };
    made.port_reuse_buffer = [](void*, std::uint32_t, std::uint32_t) { return 0; };
    made.process = [](void* self) {
      runIOCycle(of(self).cycle_);
      return SPA_STATUS_NEED_DATA | SPA_STATUS_HAVE_DATA;
    };
    return made;
  }();
  return table;
}

} // namespace sonvel::pipewire
