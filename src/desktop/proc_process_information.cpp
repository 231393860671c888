#include "desktop/proc_process_information.h"

#include "desktop/regular_file.h"

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace sonvel::desktop {

ProcProcessInformation::ProcProcessInformation(std::string root)
    : root_(std::move(root)) {}

std::int32_t ProcProcessInformation::ownProcessID() const {
  return getpid();
}

int ProcProcessInformation::procName(std::int32_t pid, std::span<char> name) const {
  if (name.empty()) return 0;
  name[0] = '\0';
  if (pid <= 0) return 0;

  // A name may contain any character, including line ends; the kernel appends a line end.
  constexpr std::size_t kLongerThanAnyName = 4096;
  auto text = readStartOfRegularFile(root_ + '/' + std::to_string(pid) + "/comm", kLongerThanAnyName)
                  .value_or(std::string()); // the process may have ended
  if (text.ends_with('\n')) text.pop_back();

  const std::size_t length = std::min(text.size(), name.size() - 1);
  std::copy_n(text.begin(), length, name.begin());
  name[length] = '\0';
  return static_cast<int>(length);
}

} // namespace sonvel::desktop
