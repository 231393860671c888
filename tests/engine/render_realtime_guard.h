#pragma once

namespace sonvel {

/// What the process of a guarded run exits with when it calls into the heap or takes a lock. A system call
/// ends it by SIGSYS instead.
inline constexpr int kUnsafeCallExitCode = 99;

/// From here on this process may do nothing but compute and `_exit`, for good. For the child of a death test,
/// which has one thread. False if the system can't guard it.
bool enterGuardedRun() noexcept;

} // namespace sonvel
