#pragma once

#include "platform/application_icons.h"
#include "platform/running_applications.h"

#include <QIcon>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

namespace sonvel {

/// Icons of the listed applications. A found icon, or the generic one, is kept until the program ends; if
/// nothing was found the next call tries again. Main thread, while the application object exists.
class AppIconCache {
 public:
  /// Both must outlive this object.
  AppIconCache(const RunningApplications& running, const ApplicationIcons& icons);

  /// The icon for an application's row. Helpers of one parent share the parent's icon. Null only if there is
  /// not even a generic icon. May read files at the first call.
  QIcon icon(const std::optional<std::string>& bundleID, const std::optional<std::string>& parentBundleID,
             std::int32_t pid);

 private:
  QIcon find(const std::optional<std::string>& bundleID, const std::optional<std::string>& parentBundleID,
             std::int32_t pid) const;
  QIcon runningIcon(const std::string& bundleIdentifier) const;
  QIcon runningIcon(std::int32_t pid) const;

  const RunningApplications& running_;
  const ApplicationIcons& icons_;
  std::unordered_map<std::string, QIcon> cached_;
};

} // namespace sonvel
