#pragma once

#include "desktop/desktop_entry_table.h"
#include "platform/application_icons.h"

namespace sonvel::desktop {

/// Icons from desktop entries: an application's location is the path of its entry.
class DesktopApplicationIcons final : public ApplicationIcons {
 public:
  /// `entries` must outlive this object.
  explicit DesktopApplicationIcons(const DesktopEntries& entries);

  std::optional<std::string> iconOfRunningApplication(const RunningApplication& application) const override;
  std::optional<std::string> locationOfApplication(const std::string& bundleIdentifier) const override;
  std::optional<std::string> iconForFile(const std::string& path) const override;
  std::optional<std::string> genericApplicationIcon() const override;

 private:
  const DesktopEntries& entries_;
};

} // namespace sonvel::desktop
