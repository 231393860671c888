#pragma once

#include "pipewire/graph_edits.h"
#include "pipewire/graph_index.h"

namespace sonvel::pipewire {

/// The edits that bring the graph nearer to the desired state. Call again after each event until the plan is
/// empty. The conditions give an order without a gap in the sound. Taking over: the tap's node, its links,
/// then the streams into the tap. Giving back: the streams, then the node.
Plan planEdits(const GraphIndex& graph, const DesiredState& desired, const OwnedObjects& owned);

/// Whether the filter of a started IOProc is linked with its taps and its device.
bool isFilterConnected(const GraphIndex& graph, const DesiredState& desired, const OwnedObjects& owned,
                       IOProcID ioProc);

/// Whether a muted tap wants a stream that can't be moved into it. `immovable`: as in OwnedObjects.
bool isTapPartial(const GraphIndex& graph, const DesiredTap& tap, const std::set<std::uint64_t>& immovable);

} // namespace sonvel::pipewire
