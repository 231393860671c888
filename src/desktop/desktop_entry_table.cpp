#include "desktop/desktop_entry_table.h"

#include "desktop/program_path.h"

#include <algorithm>
#include <compare>
#include <optional>
#include <utility>

namespace sonvel::desktop {
namespace {

/// How much an entry's fixed arguments differ from those of a process; less is closer.
struct Distance {
  std::ptrdiff_t missingOptions = 0;
  std::ptrdiff_t foundArguments = 0; ///< negative: more found is closer
  bool isHidden = false;
  std::size_t order = 0;

  auto operator<=>(const Distance&) const = default;
};

/// None if the entry starts the program on something else: a missing option (--started-from-file) means
/// little, a missing name (of a game or document) means another application.
std::optional<Distance> distance(const DesktopEntry& entry, const std::vector<std::string>& arguments,
                                 std::size_t order) {
  Distance result{.isHidden = !entry.isShown, .order = order};
  for (const auto& wanted : entry.launch.arguments) {
    if (std::ranges::find(arguments, wanted) != arguments.end())
      --result.foundArguments;
    else if (wanted.starts_with('-'))
      ++result.missingOptions;
    else
      return std::nullopt;
  }
  return result;
}

const DesktopEntry* nearest(const std::vector<const DesktopEntry*>& candidates,
                            const std::vector<std::string>& arguments) {
  const DesktopEntry* best = nullptr;
  std::optional<Distance> bestDistance;
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const auto candidate = distance(*candidates[i], arguments, i);
    if (!candidate || (bestDistance && *bestDistance < *candidate)) continue;
    best = candidates[i];
    bestDistance = candidate;
  }
  return best;
}

bool startTheSameProgram(const std::vector<const DesktopEntry*>& entries) {
  return std::ranges::all_of(
      entries, [&](const auto* entry) { return entry->launch.program == entries.front()->launch.program; });
}

} // namespace

DesktopEntryTable::DesktopEntryTable(std::vector<DesktopEntry> entries)
    : entries_(std::move(entries)) {
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (!byID_.emplace(entries_[i].id, i).second) continue;
    const auto& launch = entries_[i].launch;
    if (!launch.program) continue;
    byProgram_.emplace(*launch.program, i);
    if (launch.isScript) byWrapperStem_.emplace(programStem(*launch.program), i);
    if (const auto folder = installFolder(*launch.program)) byInstallFolder_.emplace(*folder, i);
  }
}

const DesktopEntry* DesktopEntryTable::find(const std::string& id) const {
  const auto found = byID_.find(id);
  return found == byID_.end() ? nullptr : &entries_[found->second];
}

const DesktopEntry* DesktopEntryTable::findByProgram(const std::string& program,
                                                     const std::vector<std::string>& arguments) const {
  if (const auto* entry = nearest(entriesAt(byProgram_, program), arguments)) return entry;
  const auto folder = installFolder(program);
  if (!folder) return nullptr;

  for (const auto name : {programStem(program), baseName(*folder)})
    if (const auto* entry = nearest(entriesAt(byWrapperStem_, std::string(name)), arguments)) return entry;

  const auto neighbours = entriesOfFolder(program);
  return startTheSameProgram(neighbours) ? nearest(neighbours, arguments) : nullptr;
}

std::vector<const DesktopEntry*> DesktopEntryTable::entriesAt(const Index& index,
                                                              const std::string& key) const {
  std::vector<std::size_t> positions;
  const auto [first, last] = index.equal_range(key);
  std::transform(first, last, std::back_inserter(positions), [](const auto& item) { return item.second; });
  std::ranges::sort(positions);

  std::vector<const DesktopEntry*> entries;
  std::ranges::transform(positions, std::back_inserter(entries), [this](auto i) { return &entries_[i]; });
  return entries;
}

std::vector<const DesktopEntry*> DesktopEntryTable::entriesOfFolder(std::string_view program) const {
  for (auto slash = program.rfind('/'); slash != 0 && slash != std::string_view::npos;
       slash = program.rfind('/', slash - 1)) {
    auto entries = entriesAt(byInstallFolder_, std::string(program.substr(0, slash)));
    if (!entries.empty()) return entries;
  }
  return {};
}

} // namespace sonvel::desktop
