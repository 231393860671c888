#pragma once

#include "pipewire/graph.h"
#include "pipewire/stream_targets.h"

#include <optional>
#include <string>
#include <vector>

namespace sonvel::pipewire {

/// Keeps the metadata of a graph as the server will have it once all our writes have arrived there. Loop
/// thread.
class MetadataMirror {
 public:
  explicit MetadataMirror(Graph& graph) noexcept
      : graph_(graph) {}

  /// This program has sent a write to the server.
  void wrote(GlobalID subject, const MetadataWrite& write);

  /// The server has reported a change, by whomever. value: none if the key is removed.
  void reported(GlobalID subject, const std::string& key, std::optional<MetadataValue> value);

  /// The subject, or all of its entries, are gone; its ID may be another object's next.
  void forget(GlobalID subject);

 private:
  bool takeEcho(GlobalID subject, const MetadataWrite& reported);
  bool isOnItsWay(GlobalID subject, const std::string& key) const;
  void apply(GlobalID subject, const MetadataWrite& write);

  Graph& graph_;
  std::map<GlobalID, std::vector<MetadataWrite>> ownWrites_; ///< not reported yet, in the order of the writes
};

} // namespace sonvel::pipewire
