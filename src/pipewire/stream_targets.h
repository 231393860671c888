#pragma once

#include "pipewire/graph_index.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sonvel::pipewire {

/// The name of the tap that a stream targets, of this or a killed run; empty if none. Valid while the
/// stream's metadata does not change.
std::string_view targetTapOf(const Graph& graph, GlobalID stream);

/// Whether entries of ours remain on a stream that targets no tap.
bool hasLeftover(const Graph& graph, GlobalID stream);

/// Whether a stream's entries already are those that writesBack() writes for one that entered a tap by
/// itself.
bool isSentAway(const Graph& graph, GlobalID stream);

/// The node chosen for a stream by the user, another program, the session manager's memory or its own
/// program, also while it targets a tap. None if it follows the default device, or that node is missing.
std::optional<GlobalID> chosenNodeOf(const GraphIndex& index, GlobalID stream);

/// Where a stream plays without a tap: the chosen node, else the default sink. None if both are missing.
std::optional<GlobalID> usersTargetOf(const GraphIndex& index, GlobalID stream);

/// Whether the entries of that key hold a stream's target.
bool isTarget(std::string_view key);

/// Whether a change of the metadata by another program, which is not in the graph yet, is somebody's choice
/// of a target for a stream that is sent into a tap. What the session manager restores comes earlier, before
/// it links the stream for the first time. The stream is in the graph.
bool isChoiceInTap(const Graph& graph, GlobalID stream, const MetadataWrite& change);

/// Whether the user's choice has changed since the stream was sent into its tap, or was lost by that, so that
/// our entries must be written again.
bool isChoiceOutdated(const Graph& graph, GlobalID stream);

/// The writes that send a stream into a tap, in order. They store the user's choice on the stream itself, so
/// that even the next run can restore it, and keep the session manager's memory unchanged.
std::vector<MetadataWrite> writesInto(const GraphIndex& index, GlobalID stream, const std::string& tapName);

/// The writes that send a stream back to the user's choice and remove all our entries, in order.
std::vector<MetadataWrite> writesBack(const Graph& graph, GlobalID stream);

} // namespace sonvel::pipewire
