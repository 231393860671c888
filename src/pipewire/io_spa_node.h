#pragma once

#include "pipewire/io_cycle.h"

#include <spa/node/node.h>
#include <spa/param/latency-utils.h>
#include <spa/param/param.h>
#include <spa/utils/dict.h>
#include <spa/utils/hook.h>

#include <array>
#include <memory>
#include <string>

namespace sonvel::pipewire {

/// A node that runs an IOProc on one or two channels, without delay, as the library's interface for nodes.
/// The library could run it by itself, as a filter, but the session manager links streams only to nodes that
/// let it configure their ports.
///
/// Loop thread or with its lock held; only the cycles run on the real-time thread.
class IOSpaNode {
 public:
  enum class Kind {
    filter, ///< has its ports at once
    sink,   ///< gets its ports when the session manager configures it, which then links streams to them
  };

  /// `channelCount` is 1 or 2.
  IOSpaNode(Kind kind, std::size_t channelCount);
  IOSpaNode(const IOSpaNode&) = delete;
  IOSpaNode& operator=(const IOSpaNode&) = delete;

  /// For the library, which must stop using it before it is destroyed.
  spa_node* get() noexcept { return &node_; }

  /// Runs `block` from the next cycle on, instead of the one before, which is not running any more on return.
  /// Null: the node plays silence.
  void run(std::shared_ptr<const IOProcBlock> block);

  /// The number of cycles so far, wrapping.
  std::uint32_t cycles() const noexcept { return cycle_.cycles.load(std::memory_order_acquire); }

 private:
  enum PortParam { kEnumFormat, kFormat, kBuffers, kIO, kLatency, kParamCount };

  struct Port {
    std::string name;
    bool hasFormat = false;
    std::array<spa_latency_info, 2> latencies{}; ///< by direction
    std::array<spa_param_info, kParamCount> params{};
    std::array<spa_dict_item, 3> items{};
    spa_dict properties{};
    spa_port_info info{};
  };

  using Result = int; ///< 0 or a negative errno

  static const spa_node_methods& methods();

  template <class Action> void forEachPort(const Action& action) const {
    for (const auto direction : {SPA_DIRECTION_INPUT, SPA_DIRECTION_OUTPUT})
      for (std::uint32_t port = 0; port < channelCount_; ++port)
        action(direction, port);
  }

  void preparePort(spa_direction direction, std::uint32_t channel);

  bool hasPort(spa_direction direction, std::uint32_t port) const noexcept {
    return direction <= SPA_DIRECTION_OUTPUT && port < channelCount_;
  }

  void addListener(spa_hook* hook, const spa_node_events* events, void* data);
  void announceNode();
  void announcePort(spa_direction direction, std::uint32_t port);
  void announcePorts();
  void configurePorts();
  Result enumParam(int sequence, std::uint32_t id, std::uint32_t start, std::uint32_t limit,
                   const spa_pod* filter);
  Result enumPortParam(int sequence, spa_direction direction, std::uint32_t port, std::uint32_t id,
                       std::uint32_t start, std::uint32_t limit, const spa_pod* filter);
  void emitParam(int sequence, std::uint32_t id, std::uint32_t index, const spa_pod* param,
                 const spa_pod* filter);
  Result setPortParam(spa_direction direction, std::uint32_t port, std::uint32_t id, const spa_pod* param);
  void setFormat(spa_direction direction, std::uint32_t port, bool isSet);
  Result setLatency(spa_direction direction, std::uint32_t port, const spa_pod* param);
  Result useBuffers(spa_direction direction, std::uint32_t port, spa_buffer** buffers, std::uint32_t count);

  /// Changes what the real-time thread uses.
  template <class Change> void rewire(const Change& change) {
    IOWiring wiring = cycle_.wiring.get();
    change(wiring);
    cycle_.wiring.replace(std::move(wiring));
  }

  static IOPort& wired(IOWiring& wiring, spa_direction direction, std::uint32_t port) {
    return (direction == SPA_DIRECTION_INPUT ? wiring.inputs : wiring.outputs).at(port);
  }

  const Kind kind_;
  const std::size_t channelCount_;
  bool hasPorts_; ///< they are announced
  IOCycle cycle_;
  std::array<std::array<Port, kStereo>, 2> ports_; ///< by direction and channel
  std::array<spa_param_info, 2> params_{};
  spa_node_info info_{};
  spa_hook_list hooks_{};
  spa_node node_{};
};

} // namespace sonvel::pipewire
