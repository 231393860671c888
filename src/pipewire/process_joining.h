#pragma once

#include "pipewire/desired_state.h"
#include "platform/application_identity.h"

#include <map>

namespace sonvel::pipewire {

/// Lets processes that appear later under a bundle ID of a tap join it. Loop thread.
class ProcessJoining {
 public:
  explicit ProcessJoining(const ApplicationIdentity& identity) noexcept
      : identity_(identity) {}

  /// Notes who is there already and not in the tap's list: those do not join.
  static void noteStrangers(const Graph& graph, DesiredTap& tap);

  /// Adds to the taps whoever has come since. Identifies clients as soon as they are known, usually before
  /// they have a stream; that reads files.
  void join(const Graph& graph, DesiredState& desired);

 private:
  struct Identified {
    AudioClient facts;
    std::optional<std::string> bundleID;
  };

  const std::optional<std::string>& bundleIDOf(const Client& client);

  const ApplicationIdentity& identity_;
  std::map<std::uint64_t, Identified> bySerial_;
};

} // namespace sonvel::pipewire
