#pragma once

#include "platform/audio_hardware.h"
#include "platform/bundle_information.h"
#include "platform/process_information.h"
#include "platform/running_applications.h"

namespace sonvel {

/// What finding and playing applications needs. The referents outlive every copy.
struct AudioEnvironment {
  AudioEnvironment(AudioHardware& audioHardware, const ProcessInformation& processInformation,
                   const BundleInformation& bundleInformation, const RunningApplications& runningApplications)
      : hardware(audioHardware)
      , processes(processInformation)
      , applications(runningApplications)
      , ownProcessID(processInformation.ownProcessID())
      , ownBundleID(bundleInformation.bundleIdentifier()) {}

  AudioHardware& hardware;
  const ProcessInformation& processes;
  const RunningApplications& applications;

  const std::int32_t ownProcessID;              ///< this program's, read once
  const std::optional<std::string> ownBundleID; ///< this program's, read once
};

} // namespace sonvel
