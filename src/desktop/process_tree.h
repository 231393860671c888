#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sonvel::desktop {

/// What the kernel reports of a process.
struct ProcessFacts {
  std::int32_t parentID = 0;
  std::uint64_t startTimeTicks = 0;           ///< clock ticks since boot
  std::string name = {};                      ///< the kernel's short name, at most 15 bytes
  std::optional<std::string> executable = {}; ///< path of its file, if it is the same file for this process
  std::vector<std::string> arguments = {};    ///< the command line, starting with the program's name
  std::string workingFolder = {};             ///< only for interpreters; empty if unknown
  std::string controlGroup = {};              ///< path in systemd's hierarchy

  bool operator==(const ProcessFacts&) const = default;
};

/// The processes of the machine.
class ProcessTree {
 public:
  virtual ~ProcessTree() = default;

  /// All facts belong to the same process, even if its ID is reused meanwhile. None if there is no such
  /// process. Any thread; reads files.
  virtual std::optional<ProcessFacts> process(std::int32_t pid) const = 0;
};

/// Processes from the proc file system.
class ProcFilesystem final : public ProcessTree {
 public:
  /// `root` is its mount point.
  explicit ProcFilesystem(std::string root = "/proc");

  std::optional<ProcessFacts> process(std::int32_t pid) const override;

 private:
  std::string root_;
};

} // namespace sonvel::desktop
