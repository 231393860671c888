#include "desktop/desktop_identity.h"

#include "desktop/program_path.h"
#include "desktop/systemd_unit.h"

#include <span>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <utility>

namespace sonvel::desktop {
namespace {

/// Limits the search; applications have fewer generations between their first process and the playing one.
constexpr int kMostGenerations = 16;

/// The kernel cuts the short name of a process to this length.
constexpr std::size_t kProcessNameLength = 15;

/// An empty claim counts as none.
std::optional<std::string> notEmpty(const std::optional<std::string>& text) {
  return text && !text->empty() ? text : std::nullopt;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
  return std::ranges::equal(a, b, {}, lower, lower);
}

/// A process and what follows from its facts.
struct Process {
  std::int32_t pid = 0;
  ProcessFacts facts;
  /// the script if the program is an interpreter with a script; none if without
  std::optional<std::string> program;

  bool isShell() const { return facts.executable && desktop::isShell(*facts.executable); }

  bool isTypedInto() const {
    return isShell() && !program && std::ranges::find(facts.arguments, "-c") == facts.arguments.end();
  }
};

std::string absolutePath(const std::string& word, const std::string& folder) {
  const auto path = (std::filesystem::path(folder) / word).lexically_normal().string();
  return canonicalPath(path).value_or(path);
}

std::optional<std::string> programOf(const ProcessFacts& facts) {
  if (!facts.executable || !isInterpreter(*facts.executable)) return facts.executable;
  if (facts.arguments.empty()) return std::nullopt;
  const auto words = std::span(facts.arguments).subspan(1);
  const auto script = scriptPosition(words);
  if (!script) return std::nullopt;
  return absolutePath(words[*script], facts.workingFolder);
}

/// The state of one query.
class Search {
 public:
  Search(const ProcessTree& processes, const DesktopEntryTable& entries)
      : processes_(processes)
      , entries_(entries) {}

  std::optional<std::string> entryOwning(const AudioClient& client) const {
    const auto process = find(client.processID);
    if (!process || !runsClaimedProgram(*process, client)) return std::nullopt;
    const auto* entry = entryOfUnit(*process);
    if (entry == nullptr) entry = entryOfProgram(*process);
    if (entry == nullptr) return std::nullopt;
    return entry->id;
  }

 private:
  std::optional<Process> find(std::int32_t pid) const {
    if (pid <= 1) return std::nullopt;
    auto facts = processes_.process(pid);
    if (!facts) return std::nullopt;
    auto program = programOf(*facts);
    return Process{.pid = pid, .facts = std::move(*facts), .program = std::move(program)};
  }

  /// None also if the parent's ID has been reused by a later process.
  std::optional<Process> parentOf(const Process& child) const {
    auto parent = find(child.facts.parentID);
    if (parent && parent->facts.startTimeTicks > child.facts.startTimeTicks) return std::nullopt;
    return parent;
  }

  static bool runsClaimedProgram(const Process& process, const AudioClient& client) {
    const auto binary = notEmpty(client.processBinary);
    if (!binary) return true;
    const auto claimed = baseName(*binary);
    const auto isClaimed = [&](std::string_view path) { return equalsIgnoringCase(baseName(path), claimed); };
    const auto& facts = process.facts;
    return isClaimed(facts.executable.value_or("")) || isClaimed(process.program.value_or("")) ||
           (!facts.arguments.empty() && isClaimed(facts.arguments.front())) ||
           equalsIgnoringCase(facts.name, claimed.substr(0, kProcessNameLength));
  }

  /// The innermost systemd unit of the process that is named after an installed application.
  const DesktopEntry* entryOfUnit(const Process& process) const {
    std::string_view group = process.facts.controlGroup;
    while (!group.empty()) {
      for (const auto& id : applicationIDsOfUnit(baseName(group)))
        if (const auto* entry = entries_.find(id)) return ownsItsUnit(*entry, process) ? entry : nullptr;
      const auto slash = group.rfind('/');
      group = group.substr(0, slash == std::string_view::npos ? 0 : slash);
    }
    return nullptr;
  }

  /// Programs started in a terminal, even one inside another application, share its unit but are separate.
  bool ownsItsUnit(const DesktopEntry& entry, const Process& process) const {
    if (entry.isTerminalEmulator) return process.program && process.program == entry.launch.program;
    Process member = process;
    for (int i = 0; i < kMostGenerations; ++i) {
      auto parent = parentOf(member);
      if (!parent || parent->facts.controlGroup != member.facts.controlGroup) break;
      if (parent->isTypedInto()) return false;
      member = std::move(*parent);
    }
    return true;
  }

  const DesktopEntry* entryOfProgram(Process process) const {
    for (int i = 0; i < kMostGenerations; ++i) {
      if (const auto* entry = entryStarting(process)) return entry;
      auto parent = parentOf(process);
      if (!parent || !isSameProgram(process, *parent)) return nullptr;
      process = std::move(*parent);
    }
    return nullptr;
  }

  const DesktopEntry* entryStarting(const Process& process) const {
    if (!process.program || isSharedHelper(*process.program)) return nullptr;
    return entries_.findByProgram(*process.program, process.facts.arguments);
  }

  bool isSameProgram(const Process& child, const Process& parent) const {
    if (child.facts.executable && isSharedHelper(*child.facts.executable)) return true;
    if (isWrapper(parent)) return true;
    if (!child.program) return child.facts.executable && child.facts.executable == parent.facts.executable;
    return parent.program &&
           (child.program == parent.program || shareFolder(*child.program, *parent.program));
  }

  /// A shell script that an entry starts and that waits for the actual program.
  bool isWrapper(const Process& process) const {
    return process.isShell() && process.program && entries_.startsProgram(*process.program);
  }

  static bool shareFolder(const std::string& child, const std::string& parent) {
    const auto folder = installFolder(parent);
    if (folder && isWithin(child, *folder)) return true;
    const auto helpers = installFolder(child);
    return helpers && isWithin(parent, *helpers);
  }

  const ProcessTree& processes_;
  const DesktopEntryTable& entries_;
};

std::string withoutEntrySuffix(const std::string& id) {
  constexpr std::string_view kSuffix = ".desktop";
  return id.size() > kSuffix.size() && id.ends_with(kSuffix) ? id.substr(0, id.size() - kSuffix.size()) : id;
}

} // namespace

DesktopIdentity::DesktopIdentity(const ProcessTree& processes, const DesktopEntries& entries, OwnProgram own)
    : processes_(processes)
    , entries_(entries)
    , own_(std::move(own)) {}

std::optional<std::string> DesktopIdentity::bundleIdentifier(const AudioClient& client) const {
  if (auto id = notEmpty(client.sandboxAppID)) return id;
  const auto entries = entries_.current();
  bool isFalse = false; // a program falsely claims to be this one
  for (auto id : {Search(processes_, *entries).entryOwning(client), notEmpty(client.applicationID),
                  notEmpty(client.processBinary)}) {
    if (!id) continue;
    id = withoutEntrySuffix(*id);
    if (!isClaimOfOurs(*id, client)) return id;
    isFalse = true;
  }
  if (!isFalse) return std::nullopt;
  const auto facts = processes_.process(client.processID);
  const auto file = facts ? std::string(baseName(facts->executable.value_or(facts->name))) : std::string();
  return file == own_.bundleIdentifier ? std::nullopt : notEmpty(file);
}

/// Whether the identifier is this program's but the client is another program.
bool DesktopIdentity::isClaimOfOurs(const std::string& id, const AudioClient& client) const {
  if (id.empty() || id != own_.bundleIdentifier) return false;
  const auto facts = processes_.process(client.processID);
  return !facts || !facts->executable || facts->executable != own_.executable;
}

} // namespace sonvel::desktop
