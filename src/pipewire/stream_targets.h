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

/// The node that a stream was sent to by its user, another program, the session manager's memory or its own
/// program, also while it is sent to a tap. None if it follows the default device, or that node is not there.
std::optional<GlobalID> chosenNodeOf(const Graph& graph, GlobalID stream);

/// Where a stream plays when no tap has it: the chosen node, else the default sink. None if neither is there.
std::optional<GlobalID> usersTargetOf(const Graph& graph, GlobalID stream);

/// Whether the user's choice was changed after the stream was sent into its tap, so that our entries are to
/// be written anew.
bool isChoiceOutdated(const Graph& graph, GlobalID stream);

/// The writes that send a stream into a tap, in order. They keep what the user had chosen for it on the
/// stream itself, so that it can be put back even by the next run, and leave the session manager's memory as
/// it was.
std::vector<MetadataWrite> writesInto(const Graph& graph, GlobalID stream, const std::string& tapName);

/// The writes that send a stream back to where its user had it, in order, leaving nothing of ours on it.
std::vector<MetadataWrite> writesBack(const Graph& graph, GlobalID stream);

} // namespace sonvel::pipewire
