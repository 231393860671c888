#pragma once

#include "platform/bundle_information.h"

#include <filesystem>
#include <functional>
#include <map>

namespace sonvel::desktop {

/// This program's installed configuration: one JSON object in share/sonvel/information.json under the
/// installation prefix. Without that file it is empty.
class ProgramBundle final : public BundleInformation {
 public:
  /// Reads the installed file, once.
  ProgramBundle();

  /// Reads `informationFile`, once. A file that is missing, not a JSON object or larger than 64 KiB counts as
  /// empty.
  explicit ProgramBundle(const std::filesystem::path& informationFile);

  std::optional<std::string> bundleIdentifier() const override;
  std::optional<InfoObject> objectForInfoKey(std::string_view key) const override;

  /// The information file of an executable at `program`.
  static std::filesystem::path informationFileOf(const std::filesystem::path& program);

 private:
  std::map<std::string, InfoObject, std::less<>> information_;
};

} // namespace sonvel::desktop
