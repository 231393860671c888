#include "updater/program_file.h"

#include "updater/file_writing.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace sonvel::updater {
namespace {

using std::filesystem::path;

constexpr mode_t kPermissions = 0777;
constexpr mode_t kOwnerMayRun = 0500;

path sibling(const path& program, const char* suffix) {
  return program.parent_path() / ("." + program.filename().string() + suffix);
}

path stagedProgram(const path& program) {
  return sibling(program, ".update");
}

/// Deletes a file unless it has become something.
class StagedFile {
 public:
  explicit StagedFile(path file)
      : file_(std::move(file)) {}

  ~StagedFile() {
    if (!isKept_) ::unlink(file_.c_str());
  }

  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;

  void keep() noexcept { isKept_ = true; }

 private:
  path file_;
  bool isKept_ = false;
};

/// The new program beside the old one, with its permissions, safe on disk. False with errno set.
bool stage(const path& staged, const path& program, const QByteArray& bytes) {
  struct stat old {};

  if (::stat(program.c_str(), &old) != 0) return false;
  const FileDescriptor output = createFile(staged);
  return output.isOpen() && writeAll(output.get(), bytes) &&
         ::fchmod(output.get(), (old.st_mode & kPermissions) | kOwnerMayRun) == 0 &&
         ::fsync(output.get()) == 0;
}

/// A second name for the old program; a copy where the file system has no links. False with errno set.
bool keepPrevious(const path& program) {
  const path previous = previousProgram(program);
  ::unlink(previous.c_str());
  if (::link(program.c_str(), previous.c_str()) == 0) return true;
  std::error_code failed;
  std::filesystem::copy_file(program, previous, failed);
  if (!failed) return true;
  ::unlink(previous.c_str());
  errno = failed.value();
  return false;
}

void syncFolder(const path& folder) {
  const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.isOpen()) ::fsync(opened.get());
}

} // namespace

path previousProgram(const path& program) {
  return sibling(program, ".previous");
}

std::optional<UpdateFailure> replaceProgram(const path& program, const VerifiedUpdate& update,
                                            PointOfNoReturn& point) {
  if (!update.bytes().startsWith("\x7f"
                                 "ELF"))
    return UpdateFailure::wrongKindOfFile;
  const path staged = stagedProgram(program);
  ::unlink(staged.c_str());
  StagedFile stagedFile(staged);
  if (!stage(staged, program, update.bytes())) return failureOfWriting(errno, UpdateFailure::cannotReplace);
  if (!keepPrevious(program)) return failureOfWriting(errno, UpdateFailure::cannotReplace);
  StagedFile previousFile(previousProgram(program));
  if (!point.pass()) return std::nullopt;
  if (::rename(staged.c_str(), program.c_str()) != 0) return UpdateFailure::cannotReplace;
  stagedFile.keep();
  previousFile.keep();
  syncFolder(program.parent_path());
  return std::nullopt;
}

void forgetPreviousProgram(const path& program) {
  ::unlink(stagedProgram(program).c_str());
  ::unlink(previousProgram(program).c_str());
}

bool restorePreviousProgram(const path& program) {
  return ::rename(previousProgram(program).c_str(), program.c_str()) == 0;
}

} // namespace sonvel::updater
