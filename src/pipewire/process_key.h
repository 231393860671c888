#pragma once

#include "pipewire/graph.h"

#include <string>

namespace sonvel::pipewire {

/// Names one process across its clients and streams: by its process ID where that can be trusted, by the
/// application of its sandbox, whose process IDs are its own, or else by the client alone.
using ProcessKey = std::string;

/// The process behind a client; none for the sound server's own helpers and for this program.
std::optional<ProcessKey> processKeyOf(const Graph& graph, GlobalID client);

/// The process that plays a stream.
std::optional<ProcessKey> processKeyOfStream(const Graph& graph, const Node& stream);

} // namespace sonvel::pipewire
