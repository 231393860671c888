#pragma once

#include "desktop/desktop_entry_table.h"
#include "platform/application_identity.h"
#include "platform/audio_clients.h"
#include "platform/clock.h"
#include "platform/running_applications.h"

#include <memory>
#include <mutex>
#include <vector>

namespace sonvel::desktop {

/// The applications among the sound server's clients: those with a desktop entry, and those that name
/// themselves.
///
/// Callers query each process separately; one snapshot of the clients serves all queries of a round. Only
/// what it doesn't contain is looked for among the clients of this moment.
class DesktopApplications final : public RunningApplications {
 public:
  /// All must outlive this object.
  DesktopApplications(const AudioClients& clients, const ApplicationIdentity& identity,
                      const DesktopEntries& entries, const Clock& clock);

  std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) const override;
  std::vector<RunningApplication>
  runningApplicationsWithBundleIdentifier(const std::string& bundleIdentifier) const override;

 private:
  struct Look {
    std::vector<AudioClient> clients;
    Clock::TimePoint taken;
    std::vector<RunningApplication> applications; ///< at most one per process
  };

  std::shared_ptr<const Look> freshLook() const; ///< null if there is none
  std::shared_ptr<const Look> look() const;
  std::vector<RunningApplication> applicationsOf(const std::vector<AudioClient>& clients) const;

  std::optional<RunningApplication> applicationOf(const AudioClient& client,
                                                  const DesktopEntryTable& entries) const;

  const AudioClients& clients_;
  const ApplicationIdentity& identity_;
  const DesktopEntries& entries_;
  const Clock& clock_;
  mutable std::mutex mutex_;
  mutable std::shared_ptr<const Look> look_;
};

} // namespace sonvel::desktop
