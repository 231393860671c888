#pragma once

#include "platform/application_identity.h"
#include "platform/clock.h"

#include <mutex>
#include <unordered_map>

namespace sonvel::desktop {

/// Remembers the answers of another ApplicationIdentity, which reads many files for each.
///
/// A program's identity changes only in its first seconds, while it is being started: a launcher replaces its
/// program or moves it to another systemd unit. So in a client's first ten seconds an answer counts for half
/// a second, later for fifteen seconds; then it is asked for again, which also notices newly installed
/// applications.
class RememberedIdentity final : public ApplicationIdentity {
 public:
  /// Both must outlive this object.
  RememberedIdentity(const ApplicationIdentity& identity, const Clock& clock);

  std::optional<std::string> bundleIdentifier(const AudioClient& client) const override;

 private:
  struct Answer {
    AudioClient client;
    std::optional<std::string> bundleIdentifier;
    Clock::TimePoint known; ///< when it was first asked for
    Clock::TimePoint read;
  };

  static bool isFresh(const Answer& answer, Clock::TimePoint now);

  const ApplicationIdentity& identity_;
  const Clock& clock_;
  mutable std::mutex mutex_;                                      ///< not held while files are read
  mutable std::unordered_multimap<std::int32_t, Answer> answers_; ///< by process ID
};

} // namespace sonvel::desktop
