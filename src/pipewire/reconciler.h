#pragma once

#include "pipewire/cycle_gate.h"
#include "pipewire/graph_edits.h"
#include "pipewire/graph_plan.h"
#include "pipewire/stubborn_streams.h"

#include <map>
#include <memory>
#include <optional>

namespace sonvel::pipewire {

/// Brings the server's graph to the desired state and keeps it there. Use on the loop thread or with its lock
/// held.
class Reconciler {
 public:
  Reconciler(const Graph& graph, GraphAlarm& alarm);

  /// Sets where edits go; null: none are made. The edits outlive their use here.
  void setEdits(GraphEdits* edits);

  /// Drops all objects of a lost server.
  void forgetServerObjects();

  /// Compares the graph with the desired state and makes the missing edits. Call after each change and when
  /// the alarm fires.
  void reconcile();

  /// Calls reconcile() soon, on the loop thread.
  void schedule() { alarm_.lookAgainIn(std::chrono::milliseconds{0}); }

  /// Of the graph as it is now; valid until the graph's revision changes.
  const GraphIndex& index() const { return index_.get(); }

  DesiredState& desired() noexcept { return desired_; }

  /// The block that the filter of an IOProc runs.
  void setBlock(IOProcID ioProc, IOProcBlock block) { blocks_[ioProc] = std::move(block); }

  void dropBlock(IOProcID ioProc) { blocks_.erase(ioProc); }

  /// Whether the filter of a started IOProc is linked with its taps and its device.
  bool isConnected(IOProcID ioProc) const;

  /// Whether the server refused something that its filter needs.
  bool isRefused(IOProcID ioProc) const;

  /// Whether a muted tap wants a stream that can't be moved into it.
  bool isPartial(AudioObjectID tap) const;

  bool ownsNothing() const { return tapNodes_.empty() && filters_.empty(); }

  bool hasFilter(IOProcID ioProc) const { return filters_.contains(ioProc); }

  bool hasTapNode(AudioObjectID tap) const { return tapNodes_.contains(tap); }

 private:
  OwnedObjects owned() const {
    return {tapNodes_, filters_, links_, stubborn_.stranded(), stubborn_.immovable()};
  }

  void releaseServerObjects();
  void forgetGoneObjects();
  bool isSessionManagerReady();
  void letLinksGo(const std::string& nodeName);
  void apply(const Plan& plan);
  void applyNodes(const Plan& plan);
  void createFilter(IOProcID id);
  void applyLinks(const Plan& plan);
  void applyRoutings(const Plan& plan);
  bool playsNow(GlobalID stream) const;
  void route(const StreamRouting& routing);
  std::uint32_t cycles() const;

  const Graph& graph_;
  mutable LatestIndex index_;
  GraphAlarm& alarm_;
  GraphEdits* edits_ = nullptr;
  DesiredState desired_;
  std::map<IOProcID, IOProcBlock> blocks_;
  std::map<AudioObjectID, OwnTap> tapNodes_;
  std::map<IOProcID, OwnFilter> filters_;
  std::map<PortPair, std::unique_ptr<OwnObject>> links_;
  std::map<PortPair, std::unique_ptr<OwnObject>> lastingLinks_; ///< kept until the server has created them
  std::set<PortPair> goingLinks_; ///< of links_: the server removes them with their nodes
  StubbornStreams stubborn_;
  CycleGate gate_;
  std::optional<GraphAlarm::Time> retryRefusedAt_;

  std::optional<GraphAlarm::Time> managerReadyAt_;
  bool isNewServer_ = true;
};

} // namespace sonvel::pipewire
