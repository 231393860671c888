#pragma once

#include "platform/bundle_information.h"

#include <filesystem>
#include <functional>
#include <map>

namespace sonvel::desktop {

/// This program as the desktop knows it. What a build is installed with stands in one JSON object,
/// share/sonvel/information.json under the prefix that the program's own file lies in. A build without that
/// file carries no information.
class ProgramBundle final : public BundleInformation {
 public:
  /// Reads the installed file, once.
  ProgramBundle();

  /// Reads `informationFile`, once. A file that is missing, is no JSON object or has more than 64 KiB counts
  /// as an empty one.
  explicit ProgramBundle(const std::filesystem::path& informationFile);

  std::optional<std::string> bundleIdentifier() const override;
  std::optional<InfoObject> objectForInfoKey(std::string_view key) const override;

  /// Where a program at `program` has its information file.
  static std::filesystem::path informationFileOf(const std::filesystem::path& program);

 private:
  std::map<std::string, InfoObject, std::less<>> information_;
};

} // namespace sonvel::desktop
