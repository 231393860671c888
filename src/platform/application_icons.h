#pragma once

#include "platform/running_applications.h"

#include <optional>
#include <string>

namespace sonvel {

/// Icons of applications. An icon is named as in a desktop entry: by the absolute path of a file, or by a
/// name in the icon theme. The file or name need not exist. Any thread; may read files.
class ApplicationIcons {
 public:
  virtual ~ApplicationIcons() = default;

  /// None if the application has no known icon.
  virtual std::optional<std::string>
  iconOfRunningApplication(const RunningApplication& application) const = 0;

  /// The path of the application's desktop entry. None if it is not installed.
  virtual std::optional<std::string> locationOfApplication(const std::string& bundleIdentifier) const = 0;

  /// The icon that the desktop entry at this path names. None if it names none.
  virtual std::optional<std::string> iconForFile(const std::string& path) const = 0;

  /// The icon for an application without one of its own. None if the desktop has no such icon.
  virtual std::optional<std::string> genericApplicationIcon() const = 0;
};

} // namespace sonvel
