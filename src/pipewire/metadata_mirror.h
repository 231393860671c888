#pragma once

#include "pipewire/graph.h"
#include "pipewire/stream_targets.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace sonvel::pipewire {

/// Keeps the metadata of a graph as the server will have it once all our writes have arrived there. Loop
/// thread.
class MetadataMirror {
 public:
  using Entries = std::map<GlobalID, MetadataEntries>; ///< by subject

  explicit MetadataMirror(Graph& graph) noexcept
      : graph_(graph) {}

  /// This program has sent a write to the server.
  void wrote(GlobalID subject, const MetadataWrite& write);

  /// The server has reported a change, by whomever. value: none if the key is removed.
  void reported(GlobalID subject, const std::string& key, std::optional<MetadataValue> value);

  /// All metadata is requested from the server now, after our writes so far.
  void readingBegins();

  /// The answer to the last such request, with all changes since then: what differs has not been reported.
  /// For a stream that was there at the request before, it is somebody's choice; for a newer one, what the
  /// session manager has restored.
  void read(const Entries& entries);

  /// The subject, or all of its entries, are gone; its ID may be another object's next.
  void forget(GlobalID subject);

 private:
  struct OwnWrite {
    MetadataWrite write;
    std::uint64_t reading; ///< the last one that had begun before the write
  };

  void compare(GlobalID subject, const std::string& key, const MetadataEntries& read);
  bool takeEcho(GlobalID subject, const MetadataWrite& reported);
  bool isOnItsWay(GlobalID subject, const std::string& key) const;
  void apply(GlobalID subject, const MetadataWrite& write);

  Graph& graph_;
  std::map<GlobalID, std::vector<OwnWrite>> ownWrites_; ///< not reported yet, in the order of the writes
  std::uint64_t readings_ = 0;
  std::uint64_t newestSerial_ = 0;     ///< of the nodes at the last request
  std::uint64_t knownUntilSerial_ = 0; ///< of the nodes at the request before
};

} // namespace sonvel::pipewire
