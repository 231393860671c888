#pragma once

#include "pipewire/graph_edits.h"
#include "pipewire/handles.h"
#include "pipewire/io_cycle.h"

#include <functional>
#include <string>

namespace sonvel::pipewire {

/// The node in this process that runs an IOProc: two inputs, two outputs, no delay. Loop thread; after
/// destruction its block is not called any more.
class IOFilter : public OwnObject {
 public:
  /// `changed` runs on the loop thread when the filter fails.
  IOFilter(pw_core* core, const std::string& name, const std::string& description, IOProcBlock block,
           std::function<void()> changed);

  ~IOFilter() override;

  State state() const override { return state_; }

  std::uint32_t cycles() const override { return cycle_.cycles.load(std::memory_order_acquire); }

 private:
  void setState(State state);
  void* addPort(pw_direction direction, const char* channel);

  IOCycle cycle_;
  std::function<void()> changed_;
  State state_ = State::ready;
  bool isClosing_ = false;
  FilterHandle filter_;
  Hook hook_;
};

} // namespace sonvel::pipewire
