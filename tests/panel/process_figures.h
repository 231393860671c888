#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <sys/types.h>

namespace sonvel::testing {

/// What the kernel counts for a process. All throw std::runtime_error when it has ended.
struct MemoryFigures {
  std::size_t resident = 0;     ///< bytes, with all that it shares
  std::size_t proportional = 0; ///< bytes, with its part of what it shares
  std::size_t unshared = 0;     ///< bytes that nobody else has
  std::size_t written = 0;      ///< bytes that it has written to, and so nobody else can have
};

[[nodiscard]] MemoryFigures memoryOf(pid_t process);

/// Of all its threads, also those that have ended, as user and in the kernel.
[[nodiscard]] std::chrono::nanoseconds processorTimeOf(pid_t process);

/// How often each thread has gone to sleep by itself, and so was woken later. Threads of one name together;
/// the first thread is "main".
[[nodiscard]] std::map<std::string, std::size_t> wakeUpsOf(pid_t process);

[[nodiscard]] std::size_t openFilesOf(pid_t process);

} // namespace sonvel::testing
