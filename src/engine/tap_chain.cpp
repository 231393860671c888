#include "engine/tap_chain.h"

#include "engine/hardware_error.h"
#include "engine/uuid.h"

namespace sonvel {

OSStatus createAggregateDevice(AudioHardware& hardware, TapChain& chain, const std::string& name,
                               const std::string& outputUID, const std::string& tapUID) {
  const AggregateDeviceDescription description{.name = name,
                                               .uid = randomUUID(),
                                               .mainSubDeviceUID = outputUID,
                                               .isPrivate = true,
                                               .isStacked = false,
                                               .tapAutoStart = true,
                                               .subDevices = {{.uid = outputUID}},
                                               .taps = {{.uid = tapUID, .driftCompensation = true}}};
  AudioObjectID device = kAudioObjectUnknown;
  const auto status = hardware.createAggregateDevice(description, device);
  if (status == kNoError) chain.aggID = device;
  return status;
}

void installIOProc(AudioHardware& hardware, TapChain& chain, const IOQueue& queue, IOProcBlock block) {
  IOProcID ioProc = 0;
  const auto status = hardware.createIOProcID(chain.aggID, queue, std::move(block), ioProc);
  if (status != kNoError || ioProc == 0) throw HardwareError("CreateIOProcID", status);
  chain.ioProc = ioProc;
}

void startDevice(AudioHardware& hardware, const TapChain& chain) {
  const auto status = hardware.deviceStart(chain.aggID, *chain.ioProc);
  if (status != kNoError) throw HardwareError("AudioDeviceStart", status);
}

std::optional<FailedCall> takeDown(AudioHardware& hardware, TapChain& chain) {
  if (chain.ioProc && chain.aggID != kAudioObjectUnknown) {
    if (const auto status = hardware.deviceStop(chain.aggID, *chain.ioProc); status != kNoError)
      return FailedCall{"AudioDeviceStop", status};
    if (const auto status = hardware.destroyIOProcID(chain.aggID, *chain.ioProc); status != kNoError)
      return FailedCall{"AudioDeviceDestroyIOProcID", status};
    chain.ioProc.reset();
  }
  if (chain.aggID != kAudioObjectUnknown) {
    if (const auto status = hardware.destroyAggregateDevice(chain.aggID); status != kNoError)
      return FailedCall{"AudioHardwareDestroyAggregateDevice", status};
    chain.aggID = kAudioObjectUnknown;
  }
  if (chain.tapID != kAudioObjectUnknown) {
    if (const auto status = hardware.destroyProcessTap(chain.tapID); status != kNoError)
      return FailedCall{"AudioHardwareDestroyProcessTap", status};
    chain.tapID = kAudioObjectUnknown;
  }
  return std::nullopt;
}

void abandon(AudioHardware& hardware, const TapChain& chain, bool isStarted) {
  if (isStarted) hardware.deviceStop(chain.aggID, *chain.ioProc);
  if (chain.ioProc) hardware.destroyIOProcID(chain.aggID, *chain.ioProc);
  if (chain.aggID != kAudioObjectUnknown) hardware.destroyAggregateDevice(chain.aggID);
  if (chain.tapID != kAudioObjectUnknown) hardware.destroyProcessTap(chain.tapID);
}

} // namespace sonvel
