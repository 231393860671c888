#pragma once

#include "platform/application_icons.h"

#include <map>
#include <mutex>

namespace sonvel::simulated {

/// Scripted icons: of running applications by pid, of files by path. Any thread.
class SimulatedApplicationIcons final : public ApplicationIcons {
 public:
  void setRunningIcon(std::int32_t pid, std::string icon);
  void setLocation(std::string bundleIdentifier, std::string path);
  void setFileIcon(std::string path, std::string icon);
  void setGenericIcon(std::optional<std::string> icon);

  std::optional<std::string> iconOfRunningApplication(const RunningApplication& application) const override;
  std::optional<std::string> locationOfApplication(const std::string& bundleIdentifier) const override;
  std::optional<std::string> iconForFile(const std::string& path) const override;
  std::optional<std::string> genericApplicationIcon() const override;

 private:
  mutable std::mutex mutex_;
  std::map<std::int32_t, std::string> runningIcons_;
  std::map<std::string, std::string> locations_;
  std::map<std::string, std::string> fileIcons_;
  std::optional<std::string> genericIcon_;
};

} // namespace sonvel::simulated
