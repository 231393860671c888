#pragma once

#include "platform/audio_hardware.h"
#include "platform/executor.h"
#include "platform/relay.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace sonvel {

/// Shows and changes the default output device and its volume, also while no panel is open. Follows change
/// notices; does not poll. Main thread; only the destructor waits for the audio system.
class MasterControl {
 public:
  struct State {
    std::string device;         ///< its name; empty if there is no device
    std::optional<int> percent; ///< none if it has no volume

    bool isMuted() const noexcept { return percent == 0; }

    bool operator==(const State&) const = default;
  };

  /// Reads at once. `changed` is called on the main thread with the first and each new state. The hardware is
  /// called by work posted to `onAudioThread`: one thread, in order, until this object and its posted work
  /// have ended. The referents outlive that.
  MasterControl(AudioHardware& hardware, Relay::Post onAudioThread, Executor& mainThread,
                std::function<void(const State&)> changed);
  ~MasterControl();
  MasterControl(const MasterControl&) = delete;
  MasterControl& operator=(const MasterControl&) = delete;

  /// Reads again, after the server has come. Later changes arrive by themselves.
  void refresh();

  /// Changes the volume by percentage points. No effect if the device has no volume.
  void change(int points);

  /// Sets the volume to 0, or back to its value before; to 50 percent if that is unknown.
  void toggleMute();

 private:
  class Device;

  const Relay::Post onAudioThread_;
  std::shared_ptr<Device> device_;
  Relay relay_;
};

} // namespace sonvel
