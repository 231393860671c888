#pragma once

#include "pipewire/desired_state.h"
#include "pipewire/graph.h"

namespace sonvel::pipewire {

/// The edits that bring the graph nearer to the desired state. Run again after each event until it is empty.
/// The order of a hand-over without a gap comes out of the conditions. Taking over: tap and filter, their
/// links, then the streams into the tap. Giving back: the streams, the tap, the filter.
Plan planEdits(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned);

/// Whether the session's filter hears its taps and reaches its device.
bool isSessionConnected(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned,
                        IOProcID session);

/// Whether a muted tap has a stream that can't be taken into it.
bool isTapPartial(const Graph& graph, const DesiredState& desired, const OwnedObjects& owned,
                  AudioObjectID tap);

} // namespace sonvel::pipewire
