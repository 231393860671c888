#include "updater/installation.h"

#include "platform/guardian_path.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
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

/// Follows links; all zero if the file does not exist.
struct stat statusOf(const path& file) {
  struct stat status {};

  if (::stat(file.c_str(), &status) != 0) status = {};
  return status;
}

bool belongsTo(uid_t user, const path& program) {
  const struct stat file = statusOf(program);
  const struct stat folder = statusOf(program.parent_path());
  return S_ISREG(file.st_mode) && file.st_uid == user && (folder.st_mode & S_IWOTH) == 0 &&
         ::access(program.c_str(), W_OK) == 0 && ::access(program.parent_path().c_str(), W_OK | X_OK) == 0;
}

bool belongsToPackage(const path& program) {
  return isIn(program, "/usr") && !isIn(program, "/usr/local");
}

bool hasGuardian(const path& program) {
  std::error_code ignored;
  return std::filesystem::exists(guardianOf(program), ignored);
}

/// Whether a folder in the path is accessible only to its owner and group.
bool isOutOfOthersReach(const path& program) {
  for (path folder = program.parent_path(); folder.has_relative_path(); folder = folder.parent_path())
    if ((statusOf(folder).st_mode & S_IXOTH) == 0) return true;
  return false;
}

std::optional<path> fromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') return std::nullopt;
  return path(value);
}

constexpr mode_t kPermissions = 0777;
constexpr mode_t kOwnerMayRun = 0500;

path sibling(const path& program, const char* suffix) {
  return program.parent_path() / ("." + program.filename().string() + suffix);
}

path stagedProgram(const path& program) {
  return sibling(program, ".update");
}

/// Deletes a file on destruction unless it is kept.
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

/// Writes the new program beside the old one, with its permissions, and syncs it to disk. On failure not
/// open, with errno set.
FileDescriptor stage(const path& staged, const path& program, const VerifiedUpdate& update) {
  FileDescriptor output(
      ::open(staged.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
  const mode_t permissions = (statusOf(program).st_mode & kPermissions) | kOwnerMayRun;
  const bool isWritten = output.isOpen() && writeAll(output.get(), update.bytes()) &&
                         ::fchmod(output.get(), permissions) == 0 && ::fsync(output.get()) == 0;
  return isWritten ? std::move(output) : FileDescriptor();
}

/// Whether `file` is the file that `descriptor` has open.
bool isSameFile(int descriptor, const path& file) {
  struct stat open {};

  struct stat named {};

  return ::fstat(descriptor, &open) == 0 && ::lstat(file.c_str(), &named) == 0 &&
         open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

/// Keeps the old program by a hard link, or by a copy if the file system has no links. False with errno set.
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

Installation installationOf(const InstallationFacts& facts) {
  path program = resolved(facts.executable);
  bool isOneFile = facts.isMarkedAsOneFile && !hasGuardian(program);
  if (facts.appImage && facts.mountPoint && isIn(program, resolved(*facts.mountPoint))) {
    program = resolved(*facts.appImage);
    isOneFile = true;
  }
  const bool isOwn = belongsTo(facts.user, program) && !belongsToPackage(program) &&
                     (facts.user != 0 || isOutOfOthersReach(program));
  return {isOneFile && isOwn ? Installation::Kind::singleFile : Installation::Kind::package, program};
}

Installation ownInstallation(bool isMarkedAsOneFile) {
  std::error_code failed;
  return installationOf({.executable = std::filesystem::read_symlink("/proc/self/exe", failed),
                         .appImage = fromEnvironment("APPIMAGE"),
                         .mountPoint = fromEnvironment("APPDIR"),
                         .isMarkedAsOneFile = isMarkedAsOneFile,
                         .user = ::geteuid()});
}

path previousProgram(const path& program) {
  return sibling(program, ".previous");
}

std::optional<UpdateFailure> replaceProgram(const path& program, const VerifiedUpdate& update,
                                            PointOfNoReturn& point) {
  constexpr std::string_view kElf = "\x7f"
                                    "ELF";
  if (!update.startsWith(kElf)) return UpdateFailure::wrongKindOfFile;
  const path staged = stagedProgram(program);
  ::unlink(staged.c_str());
  StagedFile stagedFile(staged);
  const FileDescriptor output = stage(staged, program, update);
  if (!output.isOpen() || !keepPrevious(program))
    return failureOfWriting(errno, UpdateFailure::cannotReplace);
  StagedFile previousFile(previousProgram(program));
  if (!point.pass()) return std::nullopt;
  if (::rename(staged.c_str(), program.c_str()) != 0) return UpdateFailure::cannotReplace;
  if (!isSameFile(output.get(), program)) { // the staged file was replaced by another
    restorePreviousProgram(program);
    return UpdateFailure::cannotReplace;
  }
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
