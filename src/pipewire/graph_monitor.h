#pragma once

#include "pipewire/graph.h"
#include "pipewire/handles.h"
#include "pipewire/stream_targets.h"

#include <pipewire/extensions/metadata.h>

#include <functional>
#include <map>
#include <memory>

namespace sonvel::pipewire {

/// Keeps a Graph equal to the server's graph during its lifetime. Loop thread.
class GraphMonitor {
 public:
  /// `changed` runs after each change of `graph`, on the loop thread.
  GraphMonitor(pw_core* core, Graph& graph, std::function<void()> changed);
  ~GraphMonitor();
  GraphMonitor(const GraphMonitor&) = delete;
  GraphMonitor& operator=(const GraphMonitor&) = delete;

  /// The proxy for writing to an object; null if there is none.
  pw_node* node(GlobalID id) const;
  pw_device* card(GlobalID id) const;
  pw_metadata* metadata() const;

  /// The server object that holds the metadata.
  std::optional<GlobalID> metadataID() const noexcept { return metadataID_; }

  /// Writes metadata of a subject, and updates the graph at once, before the server confirms. No effect while
  /// there is no metadata object.
  void write(GlobalID subject, const MetadataWrite& write);

  /// Removes a link of any creator from the server, and from the graph at once.
  void destroy(GlobalID link);

 private:
  class Watch;
  class ClientWatch;
  class NodeWatch;
  class CardWatch;
  class MetadataWatch;

  MetadataWatch* metadataWatch() const; ///< null without metadata
  void added(GlobalID id, const char* type, const spa_dict* properties);
  void removed(GlobalID id);

  Graph& graph_;
  std::function<void()> changed_;
  pw_loop* loop_;
  ProxyHandle registry_;
  Hook registryHook_;
  std::map<GlobalID, std::unique_ptr<Watch>> watches_;
  std::optional<GlobalID> metadataID_;
};

} // namespace sonvel::pipewire
