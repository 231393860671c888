#pragma once

#include "pipewire/graph_edits.h"
#include "pipewire/loop_thread.h"
#include "pipewire/server_connection.h"

#include <optional>

namespace sonvel::pipewire {

/// Makes the edits in the real server. Loop thread.
class ServerEdits final : public GraphEdits {
 public:
  /// `changed` runs on the loop thread whenever an object created here changes state.
  ServerEdits(ServerConnection& server, std::function<void()> changed);

  std::unique_ptr<OwnTapNode> makeTapNode(const DesiredTap& tap) override;
  std::unique_ptr<OwnObject> makeFilter(const DesiredFilter& filter, const IOProcBlock& block) override;
  std::unique_ptr<OwnObject> makeLink(const PortPair& ports, LinkKind kind) override;
  void cutLink(GlobalID link) override;
  void write(GlobalID stream, const MetadataWrite& write) override;

 private:
  ServerConnection& server_;
  std::function<void()> changed_;
};

/// Calls `look` on the loop thread.
class LoopAlarm final : public GraphAlarm {
 public:
  LoopAlarm(pw_loop* loop, std::function<void()> look);

  Time now() const override { return LoopThread::SteadyClock::now(); }

  void lookAgainIn(std::chrono::milliseconds delay) override;

 private:
  std::function<void()> look_;
  std::optional<Time> due_;
  LoopEvent soon_;
  LoopTimer later_;
};

} // namespace sonvel::pipewire
