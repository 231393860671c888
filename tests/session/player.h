#pragma once

#include "session/private_session.h"

#include <map>
#include <string>

namespace sonvel::session {

struct Tone {
  int frequency = 1000;   // Hz
  double amplitude = 0.5; // peak, full scale is 1
};

enum class PlayerKind { pwPlay, paplay, ffplay };

struct PlayerOptions {
  /// Stream properties, e.g. {"media.role", "Music"} or {"target.object", "Headphones"}.
  std::map<std::string, std::string> properties;
  /// Runs a copy of the program under this name, when not empty.
  std::string binaryName;
  /// On top of the session's, e.g. {"XDG_ACTIVATION_TOKEN", "..."}.
  Environment environment;
};

/// A real media player as people use it, in a process of its own, playing a stereo tone for two minutes or
/// until it is stopped. It starts at once; a Listener says when it is heard. Needs the session to live
/// longer.
class Player {
 public:
  Player(const PrivateSession& session, PlayerKind kind, Tone tone, const PlayerOptions& options = {});

  /// Of the process that plays.
  [[nodiscard]] pid_t pid() const noexcept { return process_.pid(); }

  [[nodiscard]] bool running() noexcept { return process_.running(); }

  /// Ends it; returns when it has ended. The destructor does the same.
  void stop() noexcept { process_.end(); }

 private:
  ChildProcess process_;
};

} // namespace sonvel::session
