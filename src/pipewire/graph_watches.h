#pragma once

#include "pipewire/graph_monitor.h"
#include "pipewire/metadata_mirror.h"
#include "pipewire/metadata_reader.h"

#include <functional>
#include <set>
#include <string>

namespace sonvel::pipewire {

/// An object of the server with details beyond its registry entry. Writes them into the graph.
class GraphMonitor::Watch {
 public:
  Watch(pw_registry* registry, GlobalID id, const char* type, std::uint32_t version, Graph& graph,
        const std::function<void()>& changed)
      : id_(id)
      , graph_(graph)
      , changed_(changed)
      , proxy_(static_cast<pw_proxy*>(pw_registry_bind(registry, id, type, version, 0))) {}

  virtual ~Watch() = default;
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  const ProxyHandle& proxy() const { return proxy_; }

 protected:
  GlobalID id_;
  Graph& graph_;
  const std::function<void()>& changed_;
  ProxyHandle proxy_;
  Hook hook_;
};

/// Reads which program a client is.
class GraphMonitor::ClientWatch : public Watch {
 public:
  ClientWatch(pw_registry* registry, GlobalID id, Graph& graph, const std::function<void()>& changed);

 private:
  void onInfo(const pw_client_info* info);
};

/// Reads whether a node runs, and its volume.
class GraphMonitor::NodeWatch : public Watch {
 public:
  NodeWatch(pw_registry* registry, GlobalID id, Graph& graph, const std::function<void()>& changed);

 private:
  void onInfo(const pw_node_info* info);
  void readProperties(Node& node, const spa_dict* properties);
  void onParam(std::uint32_t param, const spa_pod* value);

  std::set<std::string> forbidding_; ///< the properties that forbid moving it
};

/// Reads the active outputs of a card, with their volumes.
class GraphMonitor::CardWatch : public Watch {
 public:
  CardWatch(pw_registry* registry, GlobalID id, Graph& graph, const std::function<void()>& changed);

 private:
  void onParam(std::uint32_t param, std::uint32_t index, const spa_pod* value);
};

/// Reads the streams' targets and the default sink.
class GraphMonitor::MetadataWatch : public Watch {
 public:
  MetadataWatch(pw_loop* loop, pw_registry* registry, GlobalID id, Graph& graph,
                const std::function<void()>& changed);

  MetadataMirror& mirror() noexcept { return mirror_; }

  /// A program has connected, and binds the metadata soon.
  void onNewClient() { reader_.readSoon(); }

  /// An object is gone; its ID may be another object's next.
  void forget(GlobalID subject) {
    mirror_.forget(subject);
    reader_.forget(subject);
  }

 private:
  int onProperty(std::uint32_t subject, const char* key, const char* type, const char* value);
  void updateDefaultSink();

  MetadataMirror mirror_;
  MetadataReader reader_;
};

} // namespace sonvel::pipewire
