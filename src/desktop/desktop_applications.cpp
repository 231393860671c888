#include "desktop/desktop_applications.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace sonvel::desktop {
namespace {

using namespace std::chrono_literals;

/// Longer than one round of queries, shorter than the time between two rounds.
constexpr auto kFreshness = 500ms;

std::optional<std::string> notEmpty(const std::optional<std::string>& text) {
  return text && !text->empty() ? text : std::nullopt;
}

/// Whether two connections are of one process. Programs in different sandboxes may claim the same process ID.
bool isSameProcess(const AudioClient& left, const AudioClient& right) {
  return left.processID > 0 && left.processID == right.processID &&
         (!left.processBinary || !right.processBinary || left.processBinary == right.processBinary);
}

} // namespace

DesktopApplications::DesktopApplications(const AudioClients& clients, const ApplicationIdentity& identity,
                                         const DesktopEntries& entries, const Clock& clock)
    : clients_(clients)
    , identity_(identity)
    , entries_(entries)
    , clock_(clock) {}

std::optional<RunningApplication>
DesktopApplications::runningApplicationWithProcessIdentifier(std::int32_t pid) const {
  if (pid <= 0) return std::nullopt;
  const auto find = [pid](const Look& look) -> std::optional<RunningApplication> {
    const auto found = std::ranges::find(look.applications, pid, &RunningApplication::processID);
    if (found == look.applications.end()) return std::nullopt;
    return *found;
  };
  if (const auto last = freshLook())
    if (auto found = find(*last)) return found;
  return find(*look());
}

std::vector<RunningApplication>
DesktopApplications::runningApplicationsWithBundleIdentifier(const std::string& bundleIdentifier) const {
  const auto find = [&](const Look& look) {
    std::vector<RunningApplication> found;
    std::ranges::copy_if(look.applications, std::back_inserter(found), [&](const auto& application) {
      return application.bundleIdentifier == bundleIdentifier;
    });
    return found;
  };
  if (const auto last = freshLook())
    if (auto found = find(*last); !found.empty()) return found;
  return find(*look());
}

std::shared_ptr<const DesktopApplications::Look> DesktopApplications::freshLook() const {
  const auto now = clock_.now();
  const std::lock_guard lock(mutex_);
  return look_ && now - look_->taken < kFreshness ? look_ : nullptr;
}

std::shared_ptr<const DesktopApplications::Look> DesktopApplications::look() const {
  auto clients = clients_.audioClients();
  const auto now = clock_.now();
  const std::lock_guard lock(mutex_);
  if (!look_ || look_->clients != clients || now - look_->taken >= kFreshness) {
    auto applications = applicationsOf(clients);
    look_ = std::make_shared<const Look>(
        Look{.clients = std::move(clients), .taken = now, .applications = std::move(applications)});
  }
  return look_;
}

std::vector<RunningApplication>
DesktopApplications::applicationsOf(const std::vector<AudioClient>& clients) const {
  const auto entries = entries_.current();
  const auto hasEntry = [&](const RunningApplication& application) {
    return application.bundleIdentifier && entries->find(*application.bundleIdentifier) != nullptr;
  };
  std::vector<RunningApplication> applications;
  std::vector<const AudioClient*> clientsOfThem;
  for (const auto& client : clients) {
    auto application = applicationOf(client, *entries);
    if (!application) continue;
    // A program may be connected several times, with and without its name.
    const auto same = std::ranges::find_if(
        clientsOfThem, [&](const AudioClient* other) { return isSameProcess(*other, client); });
    if (same == clientsOfThem.end()) {
      applications.push_back(std::move(*application));
      clientsOfThem.push_back(&client);
      continue;
    }
    auto& known = applications[static_cast<std::size_t>(same - clientsOfThem.begin())];
    if (!hasEntry(known) && hasEntry(*application)) known = std::move(*application);
  }
  return applications;
}

std::optional<RunningApplication> DesktopApplications::applicationOf(const AudioClient& client,
                                                                     const DesktopEntryTable& entries) const {
  RunningApplication application{.processID = client.processID,
                                 .bundleIdentifier = identity_.bundleIdentifier(client),
                                 .localizedName = notEmpty(client.applicationName)};
  const auto* entry = application.bundleIdentifier ? entries.find(*application.bundleIdentifier) : nullptr;
  if (entry != nullptr && !entry->name.empty()) application.localizedName = entry->name;
  if (entry == nullptr && !application.localizedName) return std::nullopt;
  return application;
}

} // namespace sonvel::desktop
