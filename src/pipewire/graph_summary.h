#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>

namespace sonvel::pipewire {

/// A count of what the sound server holds, without a name that would tell of its user.
struct GraphSummary {
  std::string serverVersion;
  std::map<std::string, int> counts; ///< by media class for nodes, by kind for all else
  int ownNodes = 0;                  ///< made by a Sonvel
};

/// Connects to the sound server of this session and reads it once. None if there is no server, or it does not
/// answer in time. Blocks for that time at most; not on a thread that runs a loop of the sound library.
std::optional<GraphSummary> readGraphSummary(std::chrono::milliseconds patience);

/// The version of the sound server's library in this process.
std::string soundLibraryVersion();

} // namespace sonvel::pipewire
