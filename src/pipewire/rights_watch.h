#pragma once

#include "pipewire/graph_monitor.h"
#include "pipewire/loop_thread.h"
#include "pipewire/permissions.h"

#include <functional>
#include <optional>

namespace sonvel::pipewire {

/// Checks repeatedly what the server permits to one of our connections. Loop thread.
class RightsWatch {
 public:
  /// `onAnswer` is called on the loop thread with each answer of the server: whether we may create taps. It
  /// must not destroy this object. `mayRest` tells whether nothing of ours depends on the rights; then checks
  /// are rare. `core` and `monitor` outlive this object.
  RightsWatch(pw_loop* loop, pw_core* core, const GraphMonitor& monitor, std::function<void(bool)> onAnswer,
              std::function<bool()> mayRest);

  /// Checks now; the interval starts anew.
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
  std::optional<LoopThread::Deadline> waitsUntil_; ///< answers before this time do not count
};

} // namespace sonvel::pipewire
