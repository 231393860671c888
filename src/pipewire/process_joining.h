#pragma once

#include "pipewire/desired_state.h"
#include "platform/application_identity.h"

#include <map>

namespace sonvel::pipewire {

/// Adds later processes to the taps that have their bundle ID. Loop thread.
class ProcessJoining {
 public:
  explicit ProcessJoining(const ApplicationIdentity& identity) noexcept
      : identity_(identity) {}

  /// Records the existing processes that the tap does not list: these do not join.
  static void noteStrangers(const Graph& graph, DesiredTap& tap);

  /// Adds new processes to their taps. Identifies clients as soon as they are known, usually before they have
  /// a stream; this reads files.
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
