#pragma once

#include <filesystem>
#include <string>

namespace sonvel::desktop {

/// Whether the desktop starts a program at login: an entry in the user's autostart folder. The user's own
/// edits of it count. Any thread; reads and writes the file system.
class Autostart {
 public:
  /// `program` is what the entry starts, in the background.
  explicit Autostart(std::string program);

  /// `file` is the entry.
  Autostart(std::filesystem::path file, std::string program);

  bool isOn() const;

  /// Writes or removes the entry. False if that fails.
  bool set(bool isOn) const;

 private:
  std::filesystem::path file_;
  std::string program_;
};

/// The file that starts this program again: its AppImage, or the program itself.
std::string startedProgram();

} // namespace sonvel::desktop
