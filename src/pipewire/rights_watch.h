#pragma once

#include "pipewire/graph_monitor.h"
#include "pipewire/loop_thread.h"
#include "pipewire/permissions.h"

#include <functional>
#include <optional>

namespace sonvel::pipewire {

/// Finds out, over and over, what the server lets one connection of ours do. Belongs to the loop thread.
class RightsWatch {
 public:
  /// `onAnswer` is called on the loop thread with whether we may have taps, each time that the server has
  /// said so. It must not destroy the watch. `mayRest` says whether nothing of ours depends on what we may
  /// do: then it is asked for rarely. `core` and `monitor` outlive it.
  RightsWatch(pw_loop* loop, pw_core* core, const GraphMonitor& monitor, std::function<void(bool)> onAnswer,
              std::function<bool()> mayRest);

  /// Asks now instead of at the next time, and goes on from here.
  void ask();

 private:
  void tick();
  void send();
  void onPermissions(std::span<const pw_permission> list);
  void onInfo(const pw_client_info* info);

  const GraphMonitor& monitor_;
  std::function<void(bool)> onAnswer_;
  std::function<bool()> mayRest_;
  pw_client* client_;
  Hook hook_;
  LoopTimer tick_;
  bool isAsked_ = false;
  bool isAnswered_ = false;
  std::optional<LoopThread::Deadline> waitsUntil_; ///< from when on no answer is an answer
};

} // namespace sonvel::pipewire
