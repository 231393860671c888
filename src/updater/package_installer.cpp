#include "updater/package_installer.h"

#include "updater/file_writing.h"

#include <cerrno>
#include <system_error>

namespace sonvel::updater {
namespace {

/// The file name's end for a package, by which installers know it; null for anything else.
const char* packageSuffix(const QByteArray& bytes) {
  if (bytes.startsWith("!<arch>\ndebian-binary")) return ".deb";
  if (bytes.startsWith("\xed\xab\xee\xdb")) return ".rpm";
  return nullptr;
}

} // namespace

std::variant<std::filesystem::path, UpdateFailure>
writePackage(const std::filesystem::path& folder, const VerifiedUpdate& update, PointOfNoReturn& point) {
  const char* suffix = packageSuffix(update.bytes());
  if (suffix == nullptr) return UpdateFailure::wrongKindOfFile;
  const std::filesystem::path package = folder / (std::string("sonvel-update") + suffix);
  const FileDescriptor output = createFile(package);
  if (!output.isOpen() || !writeAll(output.get(), update.bytes()))
    return failureOfWriting(errno, UpdateFailure::noFolder);
  if (!point.pass()) {
    // Whoever called off has deleted the folder, or found it not empty when this file came into it.
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }
  return package;
}

} // namespace sonvel::updater
