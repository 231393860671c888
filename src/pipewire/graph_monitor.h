#pragma once

#include "pipewire/graph.h"
#include "pipewire/handles.h"
#include "pipewire/stream_targets.h"

#include <pipewire/extensions/metadata.h>

#include <functional>
#include <map>
#include <memory>

namespace sonvel::pipewire {

/// Keeps a Graph equal to what the server has, from the moment it is made until it is destroyed. Belongs to
/// the loop thread.
class GraphMonitor {
 public:
  /// `changed` runs after each change of `graph`, on the loop thread.
  GraphMonitor(pw_core* core, Graph& graph, std::function<void()> changed);
  ~GraphMonitor();
  GraphMonitor(const GraphMonitor&) = delete;
  GraphMonitor& operator=(const GraphMonitor&) = delete;

  /// The proxies through which an object is written; null if there is none.
  pw_node* node(GlobalID id) const;
  pw_device* card(GlobalID id) const;
  pw_metadata* metadata() const;

  /// The object behind metadata().
  std::optional<GlobalID> metadataID() const noexcept { return metadataID_; }

  /// Writes metadata on a subject, and into the graph at once: the server's own answer comes later. Does
  /// nothing while there is no metadata.
  void write(GlobalID subject, const MetadataWrite& write);

  /// Removes a link, whoever made it, from the server and at once from the graph.
  void destroy(GlobalID link);

 private:
  class Watch;
  class ClientWatch;
  class NodeWatch;
  class CardWatch;
  class MetadataWatch;

  void added(GlobalID id, const char* type, const spa_dict* properties);
  void removed(GlobalID id);

  Graph& graph_;
  std::function<void()> changed_;
  ProxyHandle registry_;
  Hook registryHook_;
  std::map<GlobalID, std::unique_ptr<Watch>> watches_;
  std::optional<GlobalID> metadataID_;
};

} // namespace sonvel::pipewire
