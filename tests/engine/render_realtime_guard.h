#pragma once

namespace sonvel {

/// Exit code of a guarded process that allocates or takes a lock. A system call ends it with SIGSYS instead.
inline constexpr int kUnsafeCallExitCode = 99;

/// From here on this process may only compute and call `_exit`. For the single-threaded child of a death
/// test. False if the system does not support it.
bool enterGuardedRun() noexcept;

} // namespace sonvel
