#pragma once

#include "platform/process_information.h"

#include <string>

namespace sonvel::desktop {

/// Processes from /proc.
class ProcProcessInformation final : public ProcessInformation {
 public:
  /// `root` is the mount point of the proc file system.
  explicit ProcProcessInformation(std::string root = "/proc");

  std::int32_t ownProcessID() const override;
  int procName(std::int32_t pid, std::span<char> name) const override;

 private:
  std::string root_;
};

} // namespace sonvel::desktop
