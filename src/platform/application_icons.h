#pragma once

#include "platform/running_applications.h"

#include <optional>
#include <string>

namespace sonvel {

/// What pictures stand for applications. An icon is named as in a desktop entry: by the absolute path of a
/// file, or by a name that icon themes know. The file or name need not exist. Any thread; may read files.
class ApplicationIcons {
 public:
  virtual ~ApplicationIcons() = default;

  /// None if the application is not known to have an icon.
  virtual std::optional<std::string>
  iconOfRunningApplication(const RunningApplication& application) const = 0;

  /// The path of the file that makes the application one of this desktop's. None if it is not installed.
  virtual std::optional<std::string> locationOfApplication(const std::string& bundleIdentifier) const = 0;

  /// The icon of what lies at a location. None if that has none.
  virtual std::optional<std::string> iconForFile(const std::string& path) const = 0;

  /// Stands for any application. None if the desktop has no such icon.
  virtual std::optional<std::string> genericApplicationIcon() const = 0;
};

} // namespace sonvel
