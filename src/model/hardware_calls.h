#pragma once

#include "engine/actor.h"
#include "engine/hardware_controller.h"

namespace sonvel {

/// The operations of the hardware controller as the main thread reaches them: each asks the actor, does not
/// wait, and gives a reply to await, behind which a coroutine goes on on the main thread. Main thread.
class HardwareCalls {
 public:
  /// `mainThread` outlives every reply.
  HardwareCalls(std::shared_ptr<Actor<HardwareController>> controller, Executor& mainThread)
      : controller_(std::move(controller))
      , mainThread_(mainThread) {}

  Reply<void> addChannel(AudioApp app, float gain, bool muted, std::optional<std::string> outputUID) const;
  Reply<std::optional<HardwareTeardownResult>> removeChannel(AudioObjectID appID) const;
  Reply<std::vector<HardwareTeardownResult>> teardownAll() const;
  Reply<void> setGain(float gain, AudioObjectID appID) const;
  Reply<void> setMuted(bool muted, AudioObjectID appID) const;
  Reply<void> setOutput(std::optional<std::string> uid, AudioObjectID appID) const;
  Reply<void> rebuild(AudioObjectID appID) const;
  Reply<std::map<AudioObjectID, float>> peaks() const;
  Reply<std::vector<AudioApp>> audibleApps() const;
  Reply<std::vector<AudioOutputDevice>> outputDevices() const;
  Reply<std::optional<float>> masterVolume() const;
  Reply<bool> setMasterVolume(float volume) const;
  Reply<std::optional<bool>> probeCapture() const;

 private:
  template <class F> auto call(F&& function) const {
    return controller_->call(std::forward<F>(function)).resumeOn(mainThread_);
  }

  std::shared_ptr<Actor<HardwareController>> controller_;
  Executor& mainThread_;
};

} // namespace sonvel
