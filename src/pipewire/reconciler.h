#pragma once

#include "pipewire/graph_plan.h"
#include "pipewire/io_filter.h"
#include "pipewire/remote_object.h"
#include "pipewire/server_connection.h"

#include <map>
#include <memory>

namespace sonvel::pipewire {

/// Brings the server's graph to the desired state and keeps it there. All calls with the loop's lock held.
class Reconciler {
 public:
  Reconciler(LoopThread& loop, const Graph& graph);

  /// The connection through which edits go from now on; null: none go any more.
  void setServer(ServerConnection* server);

  /// Lets go of all that was made in a server that is lost.
  void forgetServerObjects();

  /// Looks again soon, on the loop thread, however often it is asked before.
  void schedule() noexcept { due_.signal(); }

  DesiredState& desired() noexcept { return desired_; }

  /// The block that a session runs.
  void setBlock(IOProcID session, IOProcBlock block) { blocks_[session] = std::move(block); }

  void dropBlock(IOProcID session) { blocks_.erase(session); }

  bool isEngaged(IOProcID session) const;

  bool ownsNothing() const { return tapNodes_.empty() && filters_.empty(); }

  bool hasFilter(IOProcID session) const { return filters_.contains(session); }

  /// None while the tap has no node.
  std::optional<RemoteObject::State> tapNodeState(AudioObjectID tap) const;

 private:
  OwnedObjects owned() const;
  void releaseServerObjects();
  void reconcile();
  void purge(bool alsoFailed);
  bool isSessionManagerReady();
  void lookForStrandedStreams();
  void apply(const Plan& plan);
  void applyNodes(const Plan& plan);
  std::unique_ptr<RemoteLink> makeLink(const PortPair& pair, LinkKind kind);
  void applyLinks(const Plan& plan);
  void applyRoutings(const Plan& plan);
  void route(const StreamRouting& routing);
  void watchForCycleEnd();
  std::uint32_t cycles() const;

  LoopThread& loop_;
  const Graph& graph_;
  ServerConnection* server_ = nullptr;
  DesiredState desired_;
  std::map<IOProcID, IOProcBlock> blocks_;
  std::map<AudioObjectID, std::unique_ptr<RemoteObject>> tapNodes_;
  std::map<IOProcID, std::unique_ptr<IOFilter>> filters_;
  std::map<PortPair, std::unique_ptr<RemoteLink>> links_;
  std::map<std::string, std::set<std::uint64_t>> captured_; ///< by tap name: serials of streams sent into it

  // A session manager that starts while we are there sets up the devices first, which it can't while they
  // run.
  std::optional<LoopThread::Deadline> managerReadyAt_;
  bool isNewServer_ = true;

  // Streams that we moved, and since when those of them that play to nobody do so.
  std::set<std::uint64_t> moved_;
  std::map<std::uint64_t, LoopThread::Deadline> unlinkedSince_;
  std::set<std::uint64_t> stranded_;
  std::map<PortPair, std::unique_ptr<RemoteLink>> lastingLinks_; ///< kept until the server has made them

  // Streams change sides between two cycles. While some wait for that, the end of the next cycle is watched
  // for.
  LoopThread::Deadline watchEnds_{};
  std::uint32_t cyclesSeen_ = 0;
  bool isWatching_ = false;
  bool isBetweenCycles_ = false;

  LoopEvent due_;
  LoopTimer cycleWatch_;
  LoopTimer retry_;
};

} // namespace sonvel::pipewire
