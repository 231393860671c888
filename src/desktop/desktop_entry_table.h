#pragma once

#include "desktop/launch_command.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace sonvel::desktop {

/// An installed application, as its desktop entry describes it.
struct DesktopEntry {
  std::string id = {};   ///< without ".desktop"
  std::string name = {}; ///< in the user's language
  std::string path = {}; ///< of the file that it was read from
  LaunchCommand launch = {};
  bool isShown = true;             ///< in the desktop's menus
  bool isTerminalEmulator = false; ///< it runs other programs

  bool operator==(const DesktopEntry&) const = default;
};

/// The applications that were installed at one moment. It does not change; any thread.
class DesktopEntryTable {
 public:
  /// Of several entries with one id the first counts.
  explicit DesktopEntryTable(std::vector<DesktopEntry> entries);

  const DesktopEntry* find(const std::string& id) const;

  /// The entry that most likely started a program. `program` is the canonical path of the program or, for an
  /// interpreter, of its script; `arguments` is the command line of the process. None if no entry starts this
  /// program, a wrapper script with its name or that of its folder, or the one program of that folder.
  const DesktopEntry* findByProgram(const std::string& program,
                                    const std::vector<std::string>& arguments) const;

  /// Whether some entry starts exactly this program.
  bool startsProgram(const std::string& program) const { return byProgram_.contains(program); }

 private:
  using Index = std::unordered_multimap<std::string, std::size_t>;

  std::vector<const DesktopEntry*> entriesAt(const Index& index, const std::string& key) const;
  std::vector<const DesktopEntry*> entriesOfFolder(std::string_view program) const;

  std::vector<DesktopEntry> entries_;
  std::unordered_map<std::string, std::size_t> byID_;
  Index byProgram_;
  Index byWrapperStem_;
  Index byInstallFolder_;
};

/// Where the installed applications are looked up.
class DesktopEntries {
 public:
  virtual ~DesktopEntries() = default;

  /// The applications that are installed now. Any thread; reads files if something changed.
  virtual std::shared_ptr<const DesktopEntryTable> current() const = 0;
};

} // namespace sonvel::desktop
