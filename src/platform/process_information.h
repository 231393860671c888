#pragma once

#include <span>

#include <cstdint>

namespace sonvel {

/// What the kernel knows of processes. Any thread; does not block.
class ProcessInformation {
 public:
  virtual ~ProcessInformation() = default;

  /// This program's own process ID.
  virtual std::int32_t ownProcessID() const = 0;

  /// Writes the kernel's short name of a process into `name`, cut to fit and NUL-terminated. Returns its
  /// length in bytes; 0 or less if there is no such process.
  virtual int procName(std::int32_t pid, std::span<char> name) const = 0;
};

} // namespace sonvel
