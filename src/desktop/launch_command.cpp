#include "desktop/launch_command.h"

#include "desktop/glib_ptr.h"
#include "desktop/program_path.h"
#include "desktop/regular_file.h"

#include <algorithm>
#include <filesystem>
#include <unistd.h>

namespace sonvel::desktop {
namespace {

std::vector<std::string> splitWords(const std::string& commandLine) {
  gint count = 0;
  gchar** raw = nullptr;
  if (g_shell_parse_argv(commandLine.c_str(), &count, &raw, nullptr) == FALSE) return {};
  const GStrings words(raw);
  return {raw, raw + count};
}

std::optional<std::string> findProgram(const std::string& word, std::span<const std::string> programFolders) {
  if (word.find('/') != std::string::npos) return word;
  for (const auto& folder : programFolders) {
    auto path = folder;
    path.append("/").append(word);
    if (access(path.c_str(), X_OK) == 0) return path;
  }
  return std::nullopt;
}

/// The number of words before the program in "env NAME=value ... program".
std::size_t environmentLength(std::span<const std::string> words) {
  if (words.empty() || baseName(words.front()) != "env") return 0;
  const auto isSetting = [](const std::string& word) {
    return word.starts_with('-') || word.find('=') != std::string::npos;
  };
  const auto program = std::ranges::find_if_not(words.subspan(1), isSetting);
  return words.size() - static_cast<std::size_t>(words.end() - program);
}

bool isTextForInterpreter(const std::string& path) {
  return readStartOfRegularFile(path, 2) == "#!";
}

/// Placeholders for files and URLs (%U), and the marks around them (@@u ... @@), are not fixed arguments.
bool isPlace(const std::string& word) {
  const auto percent = word.find('%');
  const bool isCode = percent != std::string::npos && percent + 1 < word.size() && word[percent + 1] != '%';
  return isCode || word.starts_with("@@");
}

std::vector<std::string> fixedArguments(std::span<const std::string> words) {
  std::vector<std::string> arguments;
  std::ranges::remove_copy_if(words, std::back_inserter(arguments), isPlace);
  return arguments;
}

} // namespace

LaunchCommand parseLaunchCommand(const std::string& commandLine,
                                 std::span<const std::string> programFolders) {
  const auto allWords = splitWords(commandLine);
  auto words = std::span(allWords).subspan(environmentLength(allWords));
  if (words.empty() || isLauncher(words.front())) return {};

  const auto found = findProgram(words.front(), programFolders);
  if (!found) return {};
  auto program = canonicalPath(*found);
  if (!program || isLauncher(*program)) return {};
  words = words.subspan(1);

  bool isScript = isTextForInterpreter(*program);
  if (isInterpreter(*program) && !isScript) {
    const auto script = scriptPosition(words);
    if (!script) return {};
    program = canonicalPath(words[*script]);
    isScript = true;
    words = words.subspan(*script + 1);
  }
  if (!program) return {};
  return {.program = std::move(program), .isScript = isScript, .arguments = fixedArguments(words)};
}

std::optional<std::size_t> scriptPosition(std::span<const std::string> words) noexcept {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const auto& word = words[i];
    if (word == "-c" || word == "-e" || word == "-m") return std::nullopt;
    if (!word.empty() && word.front() != '-') return i;
  }
  return std::nullopt;
}

std::optional<std::string> canonicalPath(const std::string& path) {
  std::error_code failure;
  auto canonical = std::filesystem::canonical(path, failure);
  if (failure) return std::nullopt;
  return canonical.string();
}

} // namespace sonvel::desktop
