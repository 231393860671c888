#pragma once

#include "session/graph.h"
#include "session/private_session.h"

#include <cstdint>
#include <string>

namespace sonvel::session {

/// What Sonvel is let do something with.
enum class AccessTo { everything, server, metadata };

/// A manager of the sound server who decides what Sonvel's connection may do, and moves streams as mixers do.
class AccessManager {
 public:
  /// Needs the server to live longer.
  explicit AccessManager(const PrivateSession& session)
      : connection_(session.socketPath()) {}

  /// Sets the bits of PipeWire's permissions; returns when it has been done. Throws std::runtime_error when
  /// there is no connection of Sonvel's.
  void let(AccessTo what, std::uint32_t mask);

  /// Sends a stream (its node's global ID) to a sink.
  void route(std::uint32_t stream, const std::string& sink);

 private:
  GraphConnection connection_;
};

} // namespace sonvel::session
