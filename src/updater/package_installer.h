#pragma once

#include "platform/update_session.h"
#include "updater/program_file.h"
#include "updater/verification.h"

#include <filesystem>
#include <functional>
#include <optional>

namespace sonvel::updater {

/// The program with which this desktop lets its user install packages. It asks for whatever rights it needs;
/// this program never does. Main thread.
class PackageInstaller {
 public:
  virtual ~PackageInstaller() = default;

  /// Hands over a package that is verified. False if nothing takes it. Calls `finished` once, after it has
  /// returned true, when the file is no longer needed; not at all where nobody says so.
  virtual bool install(const std::filesystem::path& package, std::function<void()> finished) = 0;
};

/// A package of this system's kinds, written to `folder` from verified bytes; none of any other kind
/// (wrongKindOfFile), or the failure to write it. If it was called off by then, `folder` is gone and nobody
/// wants the result. Any thread; blocks.
std::variant<std::filesystem::path, UpdateFailure>
writePackage(const std::filesystem::path& folder, const VerifiedUpdate& update, PointOfNoReturn& point);

} // namespace sonvel::updater
