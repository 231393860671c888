#include "engine/capture_probe.h"

#include "audio/object_access.h"
#include "audio/output_devices.h"
#include "engine/probe_callback_realtime.h"
#include "engine/uuid.h"

namespace sonvel {

CaptureProbe::CaptureProbe(AudioHardware& hardware, const IOQueue& queue)
    : hardware_(hardware)
    , queue_(queue) {}

CaptureProbe::~CaptureProbe() {
  if (isStarted_) hardware_.deviceStop(aggregate_, ioProc_);
  if (ioProc_ != 0) hardware_.destroyIOProcID(aggregate_, ioProc_);
  if (aggregate_ != kAudioObjectUnknown) hardware_.destroyAggregateDevice(aggregate_);
  if (tap_ != kAudioObjectUnknown) hardware_.destroyProcessTap(tap_);
}

bool CaptureProbe::start(AudioObjectID process) {
  if (!createTap(process) || !createAggregateDevice() || !installIOProc()) return false;
  isStarted_ = hardware_.deviceStart(aggregate_, ioProc_) == kNoError;
  return isStarted_;
}

bool CaptureProbe::createTap(AudioObjectID process) {
  const TapDescription description{.processes = {process},
                                   .name = "SonvelProbe",
                                   .isPrivate = true,
                                   .muteBehavior = TapMuteBehavior::unmuted};
  const auto status = hardware_.createProcessTap(description, tap_);
  return status == kNoError && tap_ != kAudioObjectUnknown;
}

bool CaptureProbe::createAggregateDevice() {
  const auto tapUID = cfStringProp(hardware_, tap_, property::kTapUID);
  if (!tapUID) return false;
  const auto outputUID = defaultOutputDeviceUID(hardware_);
  if (!outputUID) return false;
  const AggregateDeviceDescription description{.name = "SonvelProbeAgg",
                                               .uid = randomUUID(),
                                               .mainSubDeviceUID = *outputUID,
                                               .isPrivate = true,
                                               .isStacked = false,
                                               .tapAutoStart = true,
                                               .subDevices = {{.uid = *outputUID}},
                                               .taps = {{.uid = *tapUID, .driftCompensation = true}}};
  const auto status = hardware_.createAggregateDevice(description, aggregate_);
  if (status != kNoError) aggregate_ = kAudioObjectUnknown;
  return aggregate_ != kAudioObjectUnknown;
}

bool CaptureProbe::installIOProc() {
  const auto block = [metrics = metrics_](const AudioTimeStamp&, const AudioBufferList& input,
                                          const AudioTimeStamp&, AudioBufferList&,
                                          const AudioTimeStamp&) { probeCycle(*metrics, input); };
  const auto status = hardware_.createIOProcID(aggregate_, queue_, block, ioProc_);
  if (status != kNoError) ioProc_ = 0;
  return ioProc_ != 0;
}

} // namespace sonvel
