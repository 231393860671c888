#pragma once

#include "pipewire/desired_state.h"
#include "platform/application_identity.h"

#include <unordered_map>

namespace sonvel::pipewire {

/// Adds later processes to the taps that have their bundle ID. Loop thread.
class ProcessJoining {
 public:
  explicit ProcessJoining(const ApplicationIdentity& identity) noexcept
      : identity_(identity) {}

  /// The processes that have a stream now will not join the tap; those that it lists are in it already.
  void noteStrangers(const GraphIndex& index, DesiredTap& tap);

  /// Adds new processes to their taps. Identifies clients as soon as they are known, usually before they have
  /// a stream; this reads files.
  void join(const GraphIndex& index, DesiredState& desired);

 private:
  struct Identified {
    std::uint64_t serial = 0; ///< of the client
    AudioClient facts;
    std::optional<std::string> bundleID;
  };

  void forgetGone(const GraphIndex& index);
  const std::optional<std::string>& bundleIDOf(GlobalID id, const Client& client);

  const ApplicationIdentity& identity_;
  std::unordered_map<GlobalID, Identified> identified_;    ///< by client
  std::unordered_map<ProcessKey, std::uint64_t> arrivals_; ///< of all strangers, in the order of noting
  std::uint64_t lastArrival_ = 0;
};

} // namespace sonvel::pipewire
