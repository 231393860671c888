#pragma once

#include "pipewire/handles.h"
#include "pipewire/io_cycle.h"

#include <functional>
#include <string>

namespace sonvel::pipewire {

/// The node in this process that runs an IOProc: two inputs, two outputs, no samples of delay. Belongs to the
/// loop thread; once destroyed its block does not run any more.
class IOFilter {
 public:
  /// `changed` runs on the loop thread when the filter breaks.
  IOFilter(pw_core* core, const std::string& name, const std::string& description, IOProcBlock block,
           std::function<void()> changed);

  ~IOFilter();
  IOFilter(const IOFilter&) = delete;
  IOFilter& operator=(const IOFilter&) = delete;

  bool isBroken() const noexcept { return isBroken_; }

  /// Grows with each cycle, wrapping. Any thread.
  std::uint32_t cycles() const noexcept { return cycle_.cycles.load(std::memory_order_acquire); }

 private:
  void broke();
  void* addPort(pw_direction direction, const char* channel);

  IOCycle cycle_;
  std::function<void()> changed_;
  bool isBroken_ = false;
  bool isClosing_ = false;
  FilterHandle filter_;
  Hook hook_;
};

} // namespace sonvel::pipewire
