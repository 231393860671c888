#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>

namespace sonvel::pipewire {

/// Counts of the sound server's objects, without names that reveal anything of the user.
struct GraphSummary {
  std::string serverVersion;
  std::map<std::string, int> counts; ///< nodes by media class, other objects by kind
  int ownNodes = 0;                  ///< made by Sonvel
};

/// Connects to the session's sound server and reads it once. None without a server, or if it does not answer
/// within `patience`. Blocks until then; not on a thread that runs a loop of the sound library.
std::optional<GraphSummary> readGraphSummary(std::chrono::milliseconds patience);

/// The version of the sound server's library in this process.
std::string soundLibraryVersion();

} // namespace sonvel::pipewire
