#pragma once

#include "updater/verification.h"

#include <atomic>
#include <filesystem>
#include <optional>

namespace sonvel::updater {

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

/// Where the program of before is kept until the new one has started.
std::filesystem::path previousProgram(const std::filesystem::path& program);

/// Puts `update` in the place of `program` in one step: whoever starts `program` gets the old one or the new
/// one, whole. The old one stays as previousProgram. Nothing has changed, and nothing is left behind, if it
/// fails (wrongKindOfFile, diskFull or cannotReplace) or was called off before the step. Any thread; blocks.
std::optional<UpdateFailure> replaceProgram(const std::filesystem::path& program,
                                            const VerifiedUpdate& update, PointOfNoReturn& point);

/// To be called when `program` has started: it works, and what was kept for the case that it doesn't is
/// deleted, with what an installation that was cut off has left.
void forgetPreviousProgram(const std::filesystem::path& program);

/// Undoes replaceProgram. False if there is nothing to go back to.
bool restorePreviousProgram(const std::filesystem::path& program);

} // namespace sonvel::updater
