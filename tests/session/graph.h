#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sonvel::session {

/// One object that a PipeWire server offers, with the properties that its registry tells.
struct GraphObject {
  std::uint32_t id = 0;
  std::string type; // "Node", "Port", "Link", "Client", "Metadata", "Device" ...
  std::map<std::string, std::string> properties;

  /// Empty when there is no such property.
  [[nodiscard]] std::string_view property(const std::string& key) const;
};

inline constexpr std::uint32_t kEveryObject = 0xffffffff;

struct MetadataEntry {
  std::string metadata; // the name of the metadata object: "default", "settings" ...
  std::uint32_t subject = 0;
  std::string key;
  std::string value;

  friend bool operator==(const MetadataEntry&, const MetadataEntry&) = default;
};

/// All that a server offers at one moment.
struct Graph {
  std::vector<GraphObject> objects;
  std::vector<MetadataEntry> metadata;

  /// Null when there is no such node.
  [[nodiscard]] const GraphObject* node(std::string_view name) const;
  /// Empty when it is not set.
  [[nodiscard]] std::string metadataValue(std::string_view name, std::uint32_t subject,
                                          std::string_view key) const;
  /// The node.name of the sink that applications play to; empty without one.
  [[nodiscard]] std::string defaultSink() const;
};

/// A look at a PipeWire server from outside of what is tested: a connection of its own, driven by the thread
/// that calls. Everything throws std::runtime_error when the server is lost or the deadline passes.
class GraphConnection {
 public:
  using Deadline = std::chrono::steady_clock::time_point;

  /// Connects to the socket at this path.
  explicit GraphConnection(const std::string& socketPath);
  ~GraphConnection();
  GraphConnection(const GraphConnection&) = delete;
  GraphConnection& operator=(const GraphConnection&) = delete;

  /// The graph, after all that the server had to tell so far.
  [[nodiscard]] Graph snapshot(Deadline deadline);
  /// Blocks until the graph is as wanted; false when the deadline came first.
  [[nodiscard]] bool waitFor(const std::function<bool(const Graph&)>& wanted, Deadline deadline);

  /// Creates a node by the server's "adapter" factory. It stays when this connection ends.
  void createAdapter(const std::map<std::string, std::string>& properties);
  void destroy(std::uint32_t id);
  /// Sets what another client may do with one object, or with all that have no mask of their own
  /// (kEveryObject); a mask of bits as in PipeWire's permission.h.
  void setPermissions(std::uint32_t client, std::uint32_t object, std::uint32_t mask);
  /// Writes into the metadata object of this name; an empty value removes the key.
  void setMetadata(std::string_view name, std::uint32_t subject, const std::string& key,
                   const std::string& type, const std::string& value);

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

} // namespace sonvel::session
