#pragma once

#include <filesystem>
#include <system_error>

namespace sonvel {

/// The path of the guardian program that belongs to `program`: beside it in a build, in a folder below
/// libexec where it is installed. The file may be missing. Any thread; reads the file system.
inline std::filesystem::path guardianOf(const std::filesystem::path& program) {
  constexpr auto kName = "sonvel-guardian";
  const auto folder = program.parent_path();
  std::error_code ignored;
  if (auto beside = folder / kName; std::filesystem::exists(beside, ignored)) return beside;
  return (folder / SONVEL_HELPERS_FROM_PROGRAM / kName).lexically_normal();
}

} // namespace sonvel
