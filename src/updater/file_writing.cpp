#include "updater/file_writing.h"

#include <cerrno>
#include <fcntl.h>

namespace sonvel::updater {

FileDescriptor createFile(const std::filesystem::path& path) {
  return FileDescriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
}

bool writeAll(int descriptor, const QByteArray& bytes) {
  qsizetype written = 0;
  while (written < bytes.size()) {
    const ssize_t count =
        ::write(descriptor, bytes.constData() + written, static_cast<std::size_t>(bytes.size() - written));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    written += count;
  }
  return true;
}

UpdateFailure failureOfWriting(int error, UpdateFailure otherwise) {
  return error == ENOSPC || error == EDQUOT || error == EFBIG ? UpdateFailure::diskFull : otherwise;
}

} // namespace sonvel::updater
