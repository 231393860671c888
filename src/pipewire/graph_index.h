#pragma once

#include "pipewire/graph.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace sonvel::pipewire {

/// Identifies a process across its clients and streams: by process ID where it is trustworthy, by application
/// for a sandbox (which has its own process IDs), otherwise by client.
using ProcessKey = std::string;

/// The process behind a client; none for the sound server's helpers and this program.
std::optional<ProcessKey> processKeyOf(const Graph& graph, GlobalID client);

/// The process that plays a stream.
std::optional<ProcessKey> processKeyOfStream(const Graph& graph, const Node& stream);

/// A graph with lookup tables for planning. Built for one plan; the graph must outlive it unchanged.
class GraphIndex {
 public:
  explicit GraphIndex(const Graph& graph);

  const Graph& graph() const noexcept { return graph_; }

  const Node& node(GlobalID id) const { return graph_.nodes.at(id); }

  const std::string& channel(GlobalID port) const { return graph_.ports.at(port).channel; }

  /// The newest node with that name, as Graph::nodeNamed.
  std::optional<GlobalID> nodeNamed(const std::string& name) const;

  /// Ordered by index.
  std::vector<GlobalID> portsOf(GlobalID node, PortDirection direction, bool monitors) const;

  /// The streams that a process plays.
  const std::vector<GlobalID>& streamsOf(const ProcessKey& process) const;

  /// All streams of applications.
  const std::vector<GlobalID>& streams() const noexcept { return streams_; }

  /// The process of a stream; none if it belongs to no application.
  const ProcessKey* processOf(GlobalID stream) const;

  /// The links that leave a node.
  const std::vector<GlobalID>& linksFrom(GlobalID node) const;

  bool feeds(GlobalID outputNode, GlobalID inputNode) const;

  bool feedsAnything(GlobalID node) const { return !linksFrom(node).empty(); }

 private:
  const Graph& graph_;
  std::unordered_map<std::string, GlobalID> nodeByName_;
  std::unordered_map<GlobalID, std::vector<GlobalID>> portsByNode_;
  std::unordered_map<GlobalID, std::vector<GlobalID>> linksByOutputNode_;
  std::unordered_map<ProcessKey, std::vector<GlobalID>> streamsByProcess_;
  std::unordered_map<GlobalID, ProcessKey> processByStream_;
  std::vector<GlobalID> streams_;
};

} // namespace sonvel::pipewire
