#pragma once

#include "pipewire/graph.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace sonvel::pipewire {

/// Identifies a process across its clients and streams: by process ID where it is trustworthy, by application
/// for a sandbox (which has its own process IDs), otherwise by client.
using ProcessKey = std::string;

/// The process behind a client; none for the sound server's helpers and this program.
std::optional<ProcessKey> processKeyOf(const Graph& graph, GlobalID client);

/// A graph with lookup tables, which only the objects and their names go into: metadata, volumes and states
/// may change meanwhile. The graph must outlive it.
class GraphIndex {
 public:
  explicit GraphIndex(const Graph& graph);
  GraphIndex(const GraphIndex&) = delete;
  GraphIndex& operator=(const GraphIndex&) = delete;

  const Graph& graph() const noexcept { return graph_; }

  const Node& node(GlobalID id) const { return *nodes_.at(id); }

  const std::string& channel(GlobalID port) const { return ports_.at(port)->channel; }

  /// The newest node with that name; two nodes can share a name while one replaces the other.
  std::optional<GlobalID> nodeNamed(std::string_view name) const;

  std::optional<GlobalID> nodeWithSerial(std::uint64_t serial) const;

  /// Ports of a node in one direction, ordered by index.
  const std::vector<GlobalID>& portsOf(GlobalID node, PortDirection direction, bool monitors) const;

  /// The streams that a process plays.
  const std::vector<GlobalID>& streamsOf(const ProcessKey& process) const;

  /// All streams of applications.
  const std::vector<GlobalID>& streams() const noexcept { return streams_; }

  /// The process of a stream; null if it belongs to no application.
  const ProcessKey* processOf(GlobalID stream) const;

  /// The clients of a process.
  const std::vector<GlobalID>& clientsOf(const ProcessKey& process) const;

  /// The process of a client; null if it is no application's.
  const ProcessKey* processOfClient(GlobalID client) const;

  /// The links that leave a node.
  const std::vector<GlobalID>& linksFrom(GlobalID node) const;

  /// Whether any port of one node is linked to the other node.
  bool feeds(GlobalID outputNode, GlobalID inputNode) const;

  bool feedsAnything(GlobalID node) const { return !linksFrom(node).empty(); }

 private:
  /// By direction, then by whether they are monitors.
  using Ports = std::array<std::array<std::vector<GlobalID>, 2>, 2>;

  const Graph& graph_;
  // A look-up in the graph's trees takes a cache miss at each level.
  std::unordered_map<GlobalID, const Node*> nodes_;
  std::unordered_map<GlobalID, const Port*> ports_;
  std::unordered_map<GlobalID, const Link*> links_;
  std::unordered_map<std::string_view, GlobalID> nodeByName_; ///< views of the graph's names
  std::unordered_map<std::uint64_t, GlobalID> nodeBySerial_;
  std::unordered_map<GlobalID, Ports> portsByNode_;
  std::unordered_map<GlobalID, std::vector<GlobalID>> linksByOutputNode_;
  std::unordered_map<std::string_view, std::vector<GlobalID>> streamsByProcess_;
  std::unordered_map<std::string_view, std::vector<GlobalID>> clientsByProcess_;
  std::unordered_map<GlobalID, ProcessKey> processByClient_; ///< the two maps above have views of these keys
  std::vector<GlobalID> streams_;
};

/// The index of a graph that changes.
class LatestIndex {
 public:
  /// The graph must outlive this.
  explicit LatestIndex(const Graph& graph) noexcept
      : graph_(graph) {}

  /// Valid until the graph's revision changes; built when it is first needed after that.
  const GraphIndex& get();

 private:
  const Graph& graph_;
  std::optional<GraphIndex> index_;
  std::uint64_t revision_ = 0;
};

} // namespace sonvel::pipewire
