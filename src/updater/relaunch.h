#pragma once

#include <filesystem>
#include <optional>

namespace sonvel::updater {

/// A program to start when this one has ended its work. Main thread.
class Relaunch {
 public:
  void request(std::filesystem::path program) { program_ = std::move(program); }

  bool isRequested() const noexcept { return program_.has_value(); }

  /// Starts the requested program on its own, without this one's AppImage environment. If the system can't
  /// start it, the one of before is put back and started. To be called last before the process ends, when all
  /// that two copies of the program would fight over is let go. False if nothing was started. May block for
  /// as long as starting a program takes.
  bool perform() const;

 private:
  std::optional<std::filesystem::path> program_;
};

} // namespace sonvel::updater
