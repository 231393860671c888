#pragma once

#include "updater/update_file.h"

#include <atomic>
#include <filesystem>
#include <optional>
#include <sys/types.h>

namespace sonvel::updater {

/// How this copy of the program was installed, which decides how it is replaced.
struct Installation {
  enum class Kind {
    singleFile, ///< an AppImage, or a build marked as one file, owned by this user
    package,    ///< anything else: the desktop's package installer replaces it
  };

  Kind kind;
  std::filesystem::path program; ///< the file to replace and to start afterwards
};

/// The input of installationOf.
struct InstallationFacts {
  std::filesystem::path executable;                ///< the running executable
  std::optional<std::filesystem::path> appImage;   ///< the image file, according to the environment
  std::optional<std::filesystem::path> mountPoint; ///< its mount point, according to the environment
  bool isMarkedAsOneFile = false;                  ///< in the installed configuration
  uid_t user = 0;
};

/// A single file is replaced only by its owner, never below /usr (except /usr/local), never in a
/// world-writable folder, and by root only where no other user can reach it. A program with a separate
/// guardian file is not a single file. The environment's AppImage data counts only if the running executable
/// is in the mount. Reads the file system.
Installation installationOf(const InstallationFacts& facts);

/// For the running program.
Installation ownInstallation(bool isMarkedAsOneFile);

/// Decides between finishing and cancelling an installation. Any thread.
class PointOfNoReturn {
 public:
  /// True unless cancelled before; afterwards it can't be cancelled.
  bool pass() noexcept { return decide(State::passed); }

  /// True unless passed before; afterwards it can't be passed.
  bool callOff() noexcept { return decide(State::calledOff); }

 private:
  enum class State { open, passed, calledOff };

  bool decide(State state) noexcept {
    State expected = State::open;
    return state_.compare_exchange_strong(expected, state);
  }

  std::atomic<State> state_ = State::open;
};

/// Where the previous program is kept until the new one has proved to work.
std::filesystem::path previousProgram(const std::filesystem::path& program);

/// Atomically replaces `program` with `update`; the old one is kept as previousProgram(). On failure
/// (wrongKindOfFile, noSpace or cannotReplace), or if cancelled in time, nothing has changed and no file is
/// left. Any thread; blocks.
std::optional<UpdateFailure> replaceProgram(const std::filesystem::path& program,
                                            const VerifiedUpdate& update, PointOfNoReturn& point);

/// Deletes the previous program and the remains of an interrupted installation.
void forgetPreviousProgram(const std::filesystem::path& program);

/// Undoes replaceProgram. False if there is no previous program.
bool restorePreviousProgram(const std::filesystem::path& program);

} // namespace sonvel::updater
