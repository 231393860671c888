#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sonvel::desktop {

/// What the kernel tells of one process.
struct ProcessFacts {
  std::int32_t parentID = 0;
  std::uint64_t startTimeTicks = 0;           ///< since the machine started
  std::string name = {};                      ///< the kernel's short name, at most 15 bytes
  std::optional<std::string> executable = {}; ///< its file's path, if that is the same file for us
  std::vector<std::string> arguments = {};    ///< the command line, the program's name first
  std::string workingFolder = {};             ///< of interpreters; empty if unknown
  std::string controlGroup = {};              ///< path in the hierarchy that systemd keeps

  bool operator==(const ProcessFacts&) const = default;
};

/// The processes of the machine.
class ProcessTree {
 public:
  virtual ~ProcessTree() = default;

  /// All facts are of one and the same process, even if its ID is given to another one meanwhile. None if
  /// there is no such process. Any thread; reads files.
  virtual std::optional<ProcessFacts> process(std::int32_t pid) const = 0;
};

/// Processes as the proc file system shows them.
class ProcFilesystem final : public ProcessTree {
 public:
  /// `root` is where it is mounted.
  explicit ProcFilesystem(std::string root = "/proc");

  std::optional<ProcessFacts> process(std::int32_t pid) const override;

 private:
  std::string root_;
};

} // namespace sonvel::desktop
