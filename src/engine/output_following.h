#pragma once

#include "audio/output_devices.h"

namespace sonvel {

/// The devices that can play now.
struct OutputSituation {
  std::vector<AudioOutputDevice> devices;
  std::optional<std::string> defaultUID; ///< none if there is no default device

  bool isConnected(const std::string& uid) const;

  /// The device for an application with this `route`: the route while its device is connected, otherwise the
  /// default device. None if there is no device.
  std::optional<std::string> deviceFor(const std::optional<std::string>& route) const;
};

/// None if the audio system does not answer. Any thread except an IOProc's; blocks as the audio system does.
std::optional<OutputSituation> readOutputSituation(AudioHardware& hardware);

} // namespace sonvel
