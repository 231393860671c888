#include "engine/output_following.h"

#include "audio/object_access.h"

#include <algorithm>

namespace sonvel {

bool OutputSituation::isConnected(const std::string& uid) const {
  return std::ranges::find(devices, uid, &AudioOutputDevice::uid) != devices.end();
}

std::optional<std::string> OutputSituation::deviceFor(const std::optional<std::string>& route) const {
  return route && isConnected(*route) ? route : defaultUID;
}

std::optional<OutputSituation> readOutputSituation(AudioHardware& hardware) {
  if (!readSystemObjects(hardware, property::kDevices)) return std::nullopt;
  return OutputSituation{enumerateOutputDevices(hardware), defaultOutputDeviceUID(hardware)};
}

} // namespace sonvel
