#include "desktop/process_tree.h"

#include "desktop/program_path.h"
#include "desktop/regular_file.h"

#include <array>
#include <charconv>
#include <fcntl.h>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace sonvel::desktop {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int descriptor) noexcept
      : descriptor_(descriptor) {}

  ~Descriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const noexcept { return descriptor_; }

  explicit operator bool() const noexcept { return descriptor_ >= 0; }

 private:
  int descriptor_;
};

/// Command lines can have megabytes; only the start identifies a program.
std::optional<std::string> readStart(int folder, const char* name) {
  constexpr std::size_t kMaximumBytes = 256UL * 1024;
  return readStartOfRegularFile(folder, name, kMaximumBytes);
}

std::optional<std::string> linkTarget(int folder, const char* name) {
  std::array<char, 4096> target{};
  const ssize_t length = readlinkat(folder, name, target.data(), target.size());
  if (length <= 0) return std::nullopt;
  return std::string(target.data(), static_cast<std::size_t>(length));
}

/// The path of a sandboxed process may mean another file, or none, outside. A file that was replaced while
/// running is no longer at its path.
std::optional<std::string> executable(int folder) {
  constexpr std::string_view kDeleted = " (deleted)";
  auto path = linkTarget(folder, "exe");
  if (!path) return std::nullopt;
  if (path->ends_with(kDeleted)) return path->substr(0, path->size() - kDeleted.size());

  struct stat running {};

  struct stat ours {};

  if (fstatat(folder, "exe", &running, 0) != 0 || stat(path->c_str(), &ours) != 0) return std::nullopt;
  if (running.st_dev != ours.st_dev || running.st_ino != ours.st_ino) return std::nullopt;
  return path;
}

std::vector<std::string> splitAtNulls(std::string_view text) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    const auto end = text.find('\0');
    parts.emplace_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return parts;
}

/// From the unified hierarchy if the process is in it, else from systemd's own.
std::string controlGroup(const std::string& text) {
  std::string group;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    constexpr std::string_view kUnified = "0::";
    constexpr std::string_view kOfSystemd = ":name=systemd:";
    if (line.starts_with(kUnified) && line.size() > kUnified.size() + 1) return line.substr(kUnified.size());
    if (const auto at = line.find(kOfSystemd); at != std::string::npos)
      group = line.substr(at + kOfSystemd.size());
  }
  return group;
}

template <typename Number> Number parsed(const std::string& word) {
  Number number = 0;
  std::from_chars(word.data(), word.data() + word.size(), number);
  return number;
}

/// "pid (name) state ppid ...": the name may contain spaces and brackets, so it ends at the last bracket.
bool readStatus(const std::string& text, ProcessFacts& facts) {
  constexpr std::size_t kParentField = 1;
  constexpr std::size_t kStartTimeField = 19;
  const auto open = text.find('(');
  const auto close = text.rfind(')');
  if (open == std::string::npos || close == std::string::npos || close < open) return false;
  facts.name = text.substr(open + 1, close - open - 1);

  std::istringstream rest(text.substr(close + 1));
  std::string word;
  for (std::size_t field = 0; rest >> word; ++field) {
    if (field == kParentField) facts.parentID = parsed<std::int32_t>(word);
    if (field == kStartTimeField) {
      facts.startTimeTicks = parsed<std::uint64_t>(word);
      return true;
    }
  }
  return false;
}

} // namespace

ProcFilesystem::ProcFilesystem(std::string root)
    : root_(std::move(root)) {}

std::optional<ProcessFacts> ProcFilesystem::process(std::int32_t pid) const {
  if (pid <= 0) return std::nullopt;
  // The open folder belongs to this process only: after its end, reading fails.
  const Descriptor folder(
      open((root_ + '/' + std::to_string(pid)).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return std::nullopt;

  ProcessFacts facts;
  facts.executable = executable(folder.get());
  facts.arguments = splitAtNulls(readStart(folder.get(), "cmdline").value_or(""));
  if (facts.executable && isInterpreter(*facts.executable))
    facts.workingFolder = linkTarget(folder.get(), "cwd").value_or("");
  facts.controlGroup = controlGroup(readStart(folder.get(), "cgroup").value_or(""));
  const auto status = readStart(folder.get(), "stat");
  if (!status || !readStatus(*status, facts)) return std::nullopt;
  return facts;
}

} // namespace sonvel::desktop
