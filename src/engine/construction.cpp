// Building a session, step by step.

#include "audio/mixer_math.h"
#include "audio/object_access.h"
#include "engine/hardware_controller.h"
#include "engine/render_callback.h"
#include "engine/uuid.h"

namespace sonvel {
namespace {

AggregateDeviceDescription describeAggregate(const AudioApp& app, const std::string& outputUID,
                                             const std::string& tapUID) {
  return {.name = "SonvelAgg-" + std::to_string(app.pid),
          .uid = randomUUID(),
          .mainSubDeviceUID = outputUID,
          .isPrivate = true,
          .isStacked = false,
          .tapAutoStart = true,
          .subDevices = {{.uid = outputUID}},
          .taps = {{.uid = tapUID, .driftCompensation = true}}};
}

} // namespace

void HardwareController::addChannel(AudioApp app, float gain, bool muted,
                                    std::optional<std::string> outputUID) {
  assertOnExecutor();
  if (const auto former = removeChannel(app.objectID); former && !former->restored())
    throw HardwareError(former->failureText(), kNoCallStatus);

  auto session = std::make_unique<TapSession>(std::move(app), std::move(outputUID));
  session->mix->setGain(MixerMath::clampGain(gain));
  session->mix->setMuted(muted);
  try {
    createTap(*session);
    createAggregateDevice(*session);
    const auto ioProc = installIOProc(*session);
    startDevice(session->aggID, ioProc);
  } catch (const HardwareError& error) {
    // The step's failure is the one to report, and with its handles gone nothing could retry the undoing.
    (void)teardown(*session);
    report(*session, false, error.description());
    throw;
  }
  const auto appID = session->app.objectID;
  report(*session, true);
  sessions_.insert_or_assign(appID, std::move(session));
}

void HardwareController::createTap(TapSession& session) {
  const TapDescription description{.processes = {session.app.objectID},
                                   .name = "SonvelTap-" + std::to_string(session.app.pid),
                                   .isPrivate = true,
                                   .muteBehavior = TapMuteBehavior::muted};
  AudioObjectID tap = kAudioObjectUnknown;
  const auto status = environment_.hardware.createProcessTap(description, tap);
  if (status != kNoError || tap == kAudioObjectUnknown) throw HardwareError("CreateProcessTap", status);
  session.tapID = tap;
}

void HardwareController::createAggregateDevice(TapSession& session) {
  auto& hardware = environment_.hardware;
  const auto tapUID = cfStringProp(hardware, session.tapID, property::kTapUID);
  if (!tapUID) throw HardwareError("tap UID", kNoCallStatus);
  const auto outputUID = session.outputUID ? session.outputUID : defaultOutputDeviceUID(hardware);
  if (!outputUID) throw HardwareError("output device", kNoCallStatus);

  AudioObjectID device = kAudioObjectUnknown;
  const auto status =
      hardware.createAggregateDevice(describeAggregate(session.app, *outputUID, *tapUID), device);
  if (status != kNoError || device == kAudioObjectUnknown)
    throw HardwareError("CreateAggregateDevice", status);
  session.aggID = device;
}

IOProcID HardwareController::installIOProc(TapSession& session) {
  // The block shares the mix and the metrics, so that a session may go while the audio system has the block.
  IOProcID ioProc = 0;
  const auto status = environment_.hardware.createIOProcID(
      session.aggID, ioQueue_, makeRenderBlock(session.mix, session.metrics), ioProc);
  if (status != kNoError || ioProc == 0) throw HardwareError("CreateIOProcID", status);
  session.ioProc = ioProc;
  return ioProc;
}

void HardwareController::startDevice(AudioObjectID device, IOProcID ioProc) {
  const auto status = environment_.hardware.deviceStart(device, ioProc);
  if (status != kNoError) throw HardwareError("AudioDeviceStart", status);
}

} // namespace sonvel
