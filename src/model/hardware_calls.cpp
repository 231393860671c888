#include "model/hardware_calls.h"

namespace sonvel {

Reply<void> HardwareCalls::addChannel(AudioApp app, float gain, bool muted,
                                      std::optional<std::string> outputUID) const {
  return call([app = std::move(app), gain, muted, outputUID = std::move(outputUID)](
                  HardwareController& controller) { controller.addChannel(app, gain, muted, outputUID); });
}

Reply<std::optional<HardwareTeardownResult>> HardwareCalls::removeChannel(AudioObjectID appID) const {
  return call([appID](HardwareController& controller) { return controller.removeChannel(appID); });
}

Reply<std::vector<HardwareTeardownResult>> HardwareCalls::teardownAll() const {
  return call(&HardwareController::teardownAll);
}

Reply<void> HardwareCalls::setGain(float gain, AudioObjectID appID) const {
  return call([gain, appID](HardwareController& controller) { controller.setGain(gain, appID); });
}

Reply<void> HardwareCalls::setMuted(bool muted, AudioObjectID appID) const {
  return call([muted, appID](HardwareController& controller) { controller.setMuted(muted, appID); });
}

Reply<void> HardwareCalls::setOutput(std::optional<std::string> uid, AudioObjectID appID) const {
  return call(
      [uid = std::move(uid), appID](HardwareController& controller) { controller.setOutput(uid, appID); });
}

Reply<void> HardwareCalls::rebuild(AudioObjectID appID) const {
  return call([appID](HardwareController& controller) { controller.rebuild(appID); });
}

Reply<std::map<AudioObjectID, float>> HardwareCalls::peaks() const {
  return call(&HardwareController::peaks);
}

Reply<std::vector<AudioApp>> HardwareCalls::audibleApps() const {
  return call(&HardwareController::audibleApps);
}

Reply<std::vector<AudioOutputDevice>> HardwareCalls::outputDevices() const {
  return call(&HardwareController::outputDevices);
}

Reply<std::optional<float>> HardwareCalls::masterVolume() const {
  return call(&HardwareController::masterVolume);
}

Reply<bool> HardwareCalls::setMasterVolume(float volume) const {
  return call([volume](HardwareController& controller) { return controller.setMasterVolume(volume); });
}

Reply<std::optional<bool>> HardwareCalls::probeCapture() const {
  return controller_
      ->callForAnswer<std::optional<bool>>(
          [](HardwareController& controller, HardwareController::ProbeAnswer answer) {
            controller.probeCapture(std::move(answer));
          })
      .resumeOn(mainThread_);
}

} // namespace sonvel
