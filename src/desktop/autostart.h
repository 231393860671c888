#pragma once

#include <filesystem>
#include <string>

namespace sonvel::desktop {

/// Switches the start at login by an entry in the user's autostart folder. The user's own edits of the entry
/// count. Any thread; reads and writes the file system.
class Autostart {
 public:
  /// `program` is started in the background.
  explicit Autostart(std::string program);

  /// `file` is the entry's path.
  Autostart(std::filesystem::path file, std::string program);

  bool isOn() const;

  /// Writes or removes the entry. False if that fails.
  bool set(bool isOn) const;

 private:
  std::filesystem::path file_;
  std::string program_;
};

/// The file that starts this program again: its AppImage, or its executable.
std::string startedProgram();

} // namespace sonvel::desktop
