#include "desktop/pulse_audio.h"

#include "desktop/regular_file.h"
#include "desktop/user_folders.h"

#include <cstdlib>
#include <string>

namespace sonvel::desktop {

// Both daemons write their process ID into the same file; the process's name tells them apart.
bool isPulseAudioServing() {
  constexpr std::size_t kMostBytes = 64;
  const auto process = readRegularFile((runtimeFolder() / "pulse" / "pid").string(), kMostBytes);
  const long id = process ? std::strtol(process->c_str(), nullptr, 10) : 0;
  if (id <= 0) return false;
  return readStartOfRegularFile("/proc/" + std::to_string(id) + "/comm", kMostBytes) == "pulseaudio\n";
}

} // namespace sonvel::desktop
