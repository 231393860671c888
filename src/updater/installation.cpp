#include "updater/installation.h"

#include <algorithm>
#include <cstdlib>
#include <system_error>
#include <unistd.h>

namespace sonvel::updater {
namespace {

using std::filesystem::path;

bool isIn(const path& file, const path& folder) {
  const auto [end, ignored] = std::mismatch(folder.begin(), folder.end(), file.begin(), file.end());
  return end == folder.end();
}

path resolved(const path& file) {
  std::error_code failed;
  const path canonical = std::filesystem::canonical(file, failed);
  return failed ? file : canonical;
}

bool userMayReplace(const path& program) {
  std::error_code failed;
  return std::filesystem::is_regular_file(program, failed) && ::access(program.c_str(), W_OK) == 0 &&
         ::access(program.parent_path().c_str(), W_OK | X_OK) == 0;
}

bool belongsToPackage(const path& program) {
  return isIn(program, "/usr") && !isIn(program, "/usr/local");
}

std::optional<path> fromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') return std::nullopt;
  return path(value);
}

} // namespace

Installation installationOf(const InstallationFacts& facts) {
  path program = resolved(facts.executable);
  if (facts.appImage && facts.mountPoint && isIn(program, resolved(*facts.mountPoint)))
    program = resolved(*facts.appImage);
  const bool single = userMayReplace(program) && !belongsToPackage(program);
  return {single ? Installation::Kind::singleFile : Installation::Kind::package, program};
}

Installation ownInstallation() {
  std::error_code failed;
  return installationOf({.executable = std::filesystem::read_symlink("/proc/self/exe", failed),
                         .appImage = fromEnvironment("APPIMAGE"),
                         .mountPoint = fromEnvironment("APPDIR")});
}

} // namespace sonvel::updater
