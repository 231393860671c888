#pragma once

#include "pipewire/graph.h"

#include <optional>
#include <string>
#include <vector>

namespace sonvel::pipewire {

/// One write to the server's metadata on a stream. Without a value the key is removed.
struct MetadataWrite {
  std::string key;
  std::optional<MetadataValue> value;

  bool operator==(const MetadataWrite&) const = default;
};

/// The name of the tap that a stream is sent to, ours or one of a run that was killed; empty if to none.
std::string targetTapOf(const Graph& graph, GlobalID stream);

/// Whether something of ours is left on a stream that is sent to no tap.
bool hasLeftover(const Graph& graph, GlobalID stream);

/// The node that a stream's user had chosen for it, else the default sink; none if that is not there.
std::optional<GlobalID> usersTargetOf(const Graph& graph, GlobalID stream);

/// The writes that send a stream into a tap, in order. They keep what the user had chosen for it on the
/// stream itself, so that it can be put back even by the next run, and leave the session manager's memory as
/// it was.
std::vector<MetadataWrite> writesInto(const Graph& graph, GlobalID stream, const std::string& tapName);

/// The writes that send a stream back to where its user had it, in order, leaving nothing of ours on it.
std::vector<MetadataWrite> writesBack(const Graph& graph, GlobalID stream);

} // namespace sonvel::pipewire
