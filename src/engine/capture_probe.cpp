// Checks by listening whether other programs' audio can be captured.

#include "engine/capture_probe.h"

#include "audio/app_discovery.h"
#include "audio/object_access.h"
#include "audio/output_devices.h"
#include "engine/application_processes.h"
#include "engine/change_listeners.h"
#include "engine/hardware_controller.h"
#include "engine/probe_callback_realtime.h"
#include "engine/tap_session.h"

namespace sonvel {
namespace {

constexpr std::chrono::milliseconds kListeningTime{600};

} // namespace

CaptureProbe::CaptureProbe(AudioHardware& hardware, const IOQueue& queue, Answer answer)
    : hardware_(hardware)
    , queue_(queue)
    , answer_(std::move(answer)) {}

CaptureProbe::~CaptureProbe() {
  if (answer_) takeDownAndAnswer(false);
}

bool CaptureProbe::start(AudioObjectID process) {
  try {
    build(process);
    isStarted_ = true;
  } catch (const HardwareError&) {
    // All failures give the same answer.
  }
  return isStarted_;
}

void CaptureProbe::build(AudioObjectID process) {
  const TapDescription description{.processes = {process},
                                   .name = "SonvelProbe",
                                   .isPrivate = true,
                                   .muteBehavior = TapMuteBehavior::unmuted};
  auto status = hardware_.createProcessTap(description, chain_.tapID);
  if (status != kNoError || chain_.tapID == kAudioObjectUnknown)
    throw HardwareError("CreateProcessTap", status);
  const auto tapUID = cfStringProp(hardware_, chain_.tapID, property::kTapUID);
  const auto outputUID = tapUID ? defaultOutputDeviceUID(hardware_) : std::nullopt;
  if (!outputUID) throw HardwareError("output device", kNoCallStatus);
  status = createAggregateDevice(hardware_, chain_, "SonvelProbeAgg", *outputUID, *tapUID);
  if (chain_.aggID == kAudioObjectUnknown) throw HardwareError("CreateAggregateDevice", status);
  installIOProc(hardware_, chain_, queue_,
                [metrics = metrics_](const AudioTimeStamp&, const AudioBufferList& input,
                                     const AudioTimeStamp&, AudioBufferList&,
                                     const AudioTimeStamp&) { probeCycle(*metrics, input); });
  startDevice(hardware_, chain_);
}

void CaptureProbe::finish() {
  takeDownAndAnswer(metrics_->cycles() >= 1 && metrics_->inPeak() > 0.0F);
}

void CaptureProbe::takeDownAndAnswer(bool hasHeard) {
  abandon(hardware_, chain_, isStarted_);
  std::exchange(answer_, nullptr)(hasHeard);
}

HardwareController::~HardwareController() {
  probes_.clear();
}

void HardwareController::probeCapture(ProbeAnswer answer) {
  assertOnExecutor();
  const auto apps = enumerateAudibleApps(environment_);
  if (apps.empty()) return answer(std::nullopt);
  auto probe = std::make_unique<CaptureProbe>(environment_.hardware, ioQueue_, std::move(answer));
  if (!probe->start(apps.front().objectID)) return; // it answers by itself on destruction
  const auto number = ++lastProbe_;
  probe->keepTimer(clock_.callAfter(kListeningTime, relay_.bind([this, number] { finishProbe(number); })));
  probes_.emplace(number, std::move(probe));
}

void HardwareController::finishProbe(std::uint64_t number) {
  assertOnExecutor();
  probes_.extract(number).mapped()->finish();
}

} // namespace sonvel
