#pragma once

#include "platform/process_information.h"

#include <string>

namespace sonvel::desktop {

/// Processes as /proc shows them.
class ProcProcessInformation final : public ProcessInformation {
 public:
  /// `root` is where the proc file system is mounted.
  explicit ProcProcessInformation(std::string root = "/proc");

  std::int32_t ownProcessID() const override;
  int procName(std::int32_t pid, std::span<char> name) const override;

 private:
  std::string root_;
};

} // namespace sonvel::desktop
