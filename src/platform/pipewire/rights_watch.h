#pragma once

#include "platform/pipewire/graph_monitor.h"
#include "platform/pipewire/loop_thread.h"
#include "platform/pipewire/permissions.h"

#include <functional>
#include <optional>

namespace sonvel::pipewire {

/// Finds out, over and over, what the server lets one connection of ours do. Belongs to the loop thread.
class RightsWatch {
 public:
  /// `told` is called on the loop thread with whether we may have taps, each time that the server has said
  /// so. It must not destroy the watch. `core` and `monitor` outlive it.
  RightsWatch(pw_loop* loop, pw_core* core, const GraphMonitor& monitor, std::function<void(bool)> told);

  /// Asks now instead of within the second.
  void ask();

 private:
  void tick();
  void toldPermissions(std::span<const pw_permission> list);
  void toldInfo(const pw_client_info* info);

  const GraphMonitor& monitor_;
  std::function<void(bool)> told_;
  pw_client* client_;
  Hook hook_;
  LoopTimer tick_;
  bool isAsked_ = false;
  bool isAnswered_ = false;
  std::optional<LoopThread::Deadline> waitsUntil_; ///< from when on no answer is an answer
};

} // namespace sonvel::pipewire
