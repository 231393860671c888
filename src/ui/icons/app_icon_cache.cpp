#include "ui/icons/app_icon_cache.h"

#include <QPixmap>
#include <QString>

namespace sonvel {
namespace {

/// A null icon also for a file or a name that gives no picture.
QIcon load(const std::optional<std::string>& name) {
  if (!name || name->empty()) return {};
  const auto text = QString::fromStdString(*name);
  const auto icon = name->starts_with('/') ? QIcon(text) : QIcon::fromTheme(text);
  constexpr QSize kAnySize(16, 16);
  return icon.pixmap(kAnySize).isNull() ? QIcon() : icon;
}

std::string keyOf(const std::optional<std::string>& bundleID,
                  const std::optional<std::string>& parentBundleID, std::int32_t pid) {
  if (parentBundleID) return *parentBundleID;
  return bundleID ? *bundleID : "pid:" + std::to_string(pid);
}

} // namespace

AppIconCache::AppIconCache(const RunningApplications& running, const ApplicationIcons& icons)
    : running_(running)
    , icons_(icons) {}

QIcon AppIconCache::icon(const std::optional<std::string>& bundleID,
                         const std::optional<std::string>& parentBundleID, std::int32_t pid) {
  const auto key = keyOf(bundleID, parentBundleID, pid);
  const auto known = cached_.find(key);
  if (known != cached_.end()) return known->second;
  auto icon = find(bundleID, parentBundleID, pid);
  if (!icon.isNull()) cached_.emplace(key, icon);
  return icon;
}

QIcon AppIconCache::find(const std::optional<std::string>& bundleID,
                         const std::optional<std::string>& parentBundleID, std::int32_t pid) const {
  for (const auto& candidate : {parentBundleID, bundleID}) {
    if (!candidate) continue;
    if (auto icon = runningIcon(*candidate); !icon.isNull()) return icon;
    const auto location = icons_.locationOfApplication(*candidate);
    if (!location) continue;
    if (auto icon = load(icons_.iconForFile(*location)); !icon.isNull()) return icon;
    break; // this is the application: another's icon would be wrong
  }
  if (auto icon = runningIcon(pid); !icon.isNull()) return icon;
  return load(icons_.genericApplicationIcon());
}

QIcon AppIconCache::runningIcon(const std::string& bundleIdentifier) const {
  const auto applications = running_.runningApplicationsWithBundleIdentifier(bundleIdentifier);
  return applications.empty() ? QIcon() : load(icons_.iconOfRunningApplication(applications.front()));
}

QIcon AppIconCache::runningIcon(std::int32_t pid) const {
  const auto application = running_.runningApplicationWithProcessIdentifier(pid);
  return application ? load(icons_.iconOfRunningApplication(*application)) : QIcon();
}

} // namespace sonvel
