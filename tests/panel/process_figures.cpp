#include "panel/process_figures.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace sonvel::testing {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBytesOfKilobyte = 1024;

fs::path folderOf(pid_t process) {
  return fs::path("/proc") / std::to_string(process);
}

std::ifstream openFile(const fs::path& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("no " + path.string());
  return file;
}

/// The numbers after "name:" in a file of such lines; those of one name are added.
std::map<std::string, std::size_t> numbersIn(const fs::path& path) {
  auto file = openFile(path);
  std::map<std::string, std::size_t> numbers;
  for (std::string line; std::getline(file, line);) {
    const auto colon = line.find(':');
    if (colon == std::string::npos) continue;
    std::istringstream value(line.substr(colon + 1));
    std::size_t number = 0;
    if (value >> number) numbers[line.substr(0, colon)] += number;
  }
  return numbers;
}

} // namespace

MemoryFigures memoryOf(pid_t process) {
  auto kilobytes = numbersIn(folderOf(process) / "smaps_rollup");
  return {.resident = kilobytes["Rss"] * kBytesOfKilobyte,
          .proportional = kilobytes["Pss"] * kBytesOfKilobyte,
          .unshared = (kilobytes["Private_Clean"] + kilobytes["Private_Dirty"]) * kBytesOfKilobyte,
          .written = (kilobytes["Private_Dirty"] + kilobytes["Swap"]) * kBytesOfKilobyte};
}

// What is in /proc/<pid>/stat, but exact: that counts hundredths of seconds.
std::chrono::nanoseconds processorTimeOf(pid_t process) {
  clockid_t clock{};
  timespec time{};
  if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0)
    throw std::runtime_error("no process " + std::to_string(process));
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::map<std::string, std::size_t> wakeUpsOf(pid_t process) {
  std::map<std::string, std::size_t> wakeUps;
  for (const auto& thread : fs::directory_iterator(folderOf(process) / "task")) {
    std::string name;
    auto file = openFile(thread.path() / "comm");
    std::getline(file, name);
    if (thread.path().filename() == std::to_string(process)) name = "main";
    wakeUps[name] += numbersIn(thread.path() / "status")["voluntary_ctxt_switches"];
  }
  return wakeUps;
}

std::size_t openFilesOf(pid_t process) {
  const auto files = fs::directory_iterator(folderOf(process) / "fd");
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

} // namespace sonvel::testing
