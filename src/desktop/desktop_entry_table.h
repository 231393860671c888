#pragma once

#include "desktop/launch_command.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace sonvel::desktop {

/// An installed application, from its desktop entry.
struct DesktopEntry {
  std::string id = {};   ///< without ".desktop"
  std::string name = {}; ///< in the user's language
  std::string path = {}; ///< of the entry's file
  LaunchCommand launch = {};
  bool isShown = true;             ///< shown in the desktop's menus
  bool isTerminalEmulator = false; ///< it runs other programs

  bool operator==(const DesktopEntry&) const = default;
};

/// A snapshot of the installed applications. Immutable; any thread.
class DesktopEntryTable {
 public:
  /// Of several entries with the same ID the first is used.
  explicit DesktopEntryTable(std::vector<DesktopEntry> entries);

  const DesktopEntry* find(const std::string& id) const;

  /// The entry that most likely started a program. `program` is the canonical path of the executable, or of
  /// the script if it is an interpreter; `arguments` is the command line of the process. None unless an entry
  /// starts this program, a wrapper script with its name or its folder's name, or the only program of its
  /// folder.
  const DesktopEntry* findByProgram(const std::string& program,
                                    const std::vector<std::string>& arguments) const;

  /// Whether an entry starts exactly this program.
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

/// Provides the installed applications.
class DesktopEntries {
 public:
  virtual ~DesktopEntries() = default;

  /// The applications installed now. Any thread; reads files after a change.
  virtual std::shared_ptr<const DesktopEntryTable> current() const = 0;
};

} // namespace sonvel::desktop
