#pragma once

#include "audio/output_devices.h"

namespace sonvel {

/// The devices that can play now.
struct OutputSituation {
  std::vector<AudioOutputDevice> devices;
  std::optional<std::string> defaultUID; ///< none: there is no default device

  bool isConnected(const std::string& uid) const;

  /// Where an application belongs that is to be heard at `route`, or at the default device if that is none:
  /// the route while its device is connected, otherwise the default device. None: nowhere now.
  std::optional<std::string> deviceFor(const std::optional<std::string>& route) const;
};

/// None if the audio system can't be asked. Any thread but an IOProc's; blocks as the audio system does.
std::optional<OutputSituation> readOutputSituation(AudioHardware& hardware);

} // namespace sonvel
