#pragma once

#include "updater/update_file.h"

#include <atomic>
#include <filesystem>
#include <optional>
#include <sys/types.h>

namespace sonvel::updater {

/// How this copy of the program was installed, and so how it is replaced.
struct Installation {
  enum class Kind {
    singleFile, ///< an AppImage, or a build marked as one file, that belongs to this user
    package,    ///< everything else: the desktop's package installer replaces it
  };

  Kind kind;
  std::filesystem::path program; ///< the file to replace, and to start afterwards
};

/// What installationOf goes by.
struct InstallationFacts {
  std::filesystem::path executable;                ///< the file that runs
  std::optional<std::filesystem::path> appImage;   ///< what the environment says is the image's file
  std::optional<std::filesystem::path> mountPoint; ///< and where it is mounted
  bool isMarkedAsOneFile = false;                  ///< by the configuration that the build is installed with
  uid_t user = 0;
};

/// A single file is replaced by its owner alone, never below /usr (except /usr/local), never in a folder that
/// everyone may write to, and by root only where no other user can reach it. A program with its guardian
/// in a file of its own is not one file. What the environment says about an AppImage counts only if the
/// running file lies in its mount. Reads the file system.
Installation installationOf(const InstallationFacts& facts);

/// Of the running program.
Installation ownInstallation(bool isMarkedAsOneFile);

/// The moment up to which an installation can be called off. Any thread.
class PointOfNoReturn {
 public:
  /// True if nobody called off before; from then on nobody can.
  bool pass() noexcept { return decide(State::passed); }

  /// True if it wasn't passed before; from then on nobody passes.
  bool callOff() noexcept { return decide(State::calledOff); }

 private:
  enum class State { open, passed, calledOff };

  bool decide(State state) noexcept {
    State expected = State::open;
    return state_.compare_exchange_strong(expected, state);
  }

  std::atomic<State> state_ = State::open;
};

/// Where the previous program is kept until the new one has proved itself.
std::filesystem::path previousProgram(const std::filesystem::path& program);

/// Replaces `program` with `update` in one step: whoever starts `program` gets the old one or the new one,
/// whole. The old one is kept as previousProgram. If it fails (wrongKindOfFile, noSpace or cannotReplace) or
/// was called off before the step, nothing has changed and nothing is left behind. Any thread; blocks.
std::optional<UpdateFailure> replaceProgram(const std::filesystem::path& program,
                                            const VerifiedUpdate& update, PointOfNoReturn& point);

/// Deletes the previous program and what an interrupted installation has left.
void forgetPreviousProgram(const std::filesystem::path& program);

/// Undoes replaceProgram. False if there is nothing to go back to.
bool restorePreviousProgram(const std::filesystem::path& program);

} // namespace sonvel::updater
