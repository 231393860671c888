#include "ui/icons/app_icon_cache.h"

#include "ui/icons/icon_themes.h"

#include <QFile>
#include <QImageReader>
#include <QPixmap>
#include <QString>
#include <fcntl.h>
#include <sys/stat.h>

namespace sonvel {
namespace {

constexpr int kScalableSide = 128; ///< pixels, for drawings without a size

/// The files are chosen by applications, so only regular files of bounded size are read, without blocking.
QIcon loadFile(const std::string& path) {
  constexpr off_t kMaximumBytes = 16L * 1024 * 1024;
  QFile file;
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor < 0 || !file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) return {};

  struct stat status {};

  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > kMaximumBytes)
    return {};
  QImageReader reader(&file);
  if (reader.supportsOption(QImageIOHandler::ScaledSize) && reader.format().startsWith("svg"))
    reader.setScaledSize(reader.size().scaled(kScalableSide, kScalableSide, Qt::KeepAspectRatio));
  return QIcon(QPixmap::fromImage(reader.read()));
}

/// Null if the file or name gives no picture.
QIcon load(const std::optional<std::string>& name) {
  if (!name || name->empty()) return {};
  const auto icon = name->starts_with('/') ? loadFile(*name) : themedIcon(QString::fromStdString(*name));
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
    break; // the right application was found; another one's icon would be wrong
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
