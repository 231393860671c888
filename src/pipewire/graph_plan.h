#pragma once

#include "pipewire/desired_state.h"
#include "pipewire/graph.h"

namespace sonvel::pipewire {

/// The edits that bring the graph nearer to the desired state. Run again after each event until it is empty;
/// the order of a hand-over without a gap comes out of the conditions:
/// tap and filter, their links, then the streams into the tap; back: the streams, the tap, the filter.
Plan planEdits(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned);

/// Whether the session's filter hears its taps and reaches its device.
bool isSessionConnected(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned,
                        IOProcID session);

/// Whether every stream that a connected session wants in its taps plays there.
bool isSessionEngaged(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned,
                      IOProcID session);

bool feedsAnything(const Graph& graph, GlobalID stream);

/// Whether a stream plays into the node of that name.
bool streamFeeds(const Graph& graph, GlobalID stream, const std::string& nodeName);

} // namespace sonvel::pipewire
