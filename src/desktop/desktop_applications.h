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

/// The applications among the clients of the sound server: those with a desktop entry, and those that give
/// themselves a name.
///
/// Who asks asks for each process in turn; the answers of one round come from one look at the clients, which
/// is kept for a moment while the same clients are connected.
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
    std::vector<RunningApplication> applications; ///< one for each process at most
  };

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
