#include "platform/updater/package_installer.h"

#include "platform/updater/file_writing.h"

#include <cerrno>

namespace sonvel::updater {
namespace {

/// The file name's end for a package, by which installers know it; null for anything else.
const char* packageSuffix(const QByteArray& bytes) {
  if (bytes.startsWith("!<arch>\ndebian-binary")) return ".deb";
  if (bytes.startsWith("\xed\xab\xee\xdb")) return ".rpm";
  return nullptr;
}

} // namespace

std::variant<std::filesystem::path, UpdateFailure> writePackage(const std::filesystem::path& folder,
                                                                const VerifiedUpdate& update) {
  const char* suffix = packageSuffix(update.bytes());
  if (suffix == nullptr) return UpdateFailure::wrongKindOfFile;
  const std::filesystem::path package = folder / (std::string("sonvel-update") + suffix);
  const FileDescriptor output = createFile(package);
  if (!output.isOpen() || !writeAll(output.get(), update.bytes()))
    return failureOfWriting(errno, UpdateFailure::noFolder);
  return package;
}

} // namespace sonvel::updater
