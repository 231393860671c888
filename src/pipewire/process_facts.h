#pragma once

#include "pipewire/graph_index.h"

namespace sonvel::pipewire {

/// What the server knows of a process, from any of its clients; null if it has gone.
const AudioClient* clientOf(const GraphIndex& index, const ProcessKey& process);

/// Whether any of its streams takes part in the graph's cycles now.
bool isRunningOutput(const GraphIndex& index, const ProcessKey& process);

/// The node chosen for the process's streams, the last choice first; none if they follow the default device.
std::optional<GlobalID> chosenNodeOf(const GraphIndex& index, const ProcessKey& process);

/// Of the last choice of a device for the process while it was tapped; 0 for none.
std::uint32_t choiceSerialOf(const GraphIndex& index, const ProcessKey& process);

} // namespace sonvel::pipewire
