#pragma once

#include "platform/audio_hardware.h"
#include "platform/executor.h"
#include "platform/relay.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace sonvel {

/// The default output device and its volume, as they are now, for whoever shows and changes them while no
/// panel is open. It hears of changes and polls nothing. Main thread; no member but the destructor waits for
/// the audio system.
class MasterControl {
 public:
  struct State {
    std::string device;         ///< its name; empty where there is none
    std::optional<int> percent; ///< none where it has no volume

    bool isMuted() const noexcept { return percent == 0; }

    bool operator==(const State&) const = default;
  };

  /// Reads at once. `changed` is called on the main thread with each new state, from the first on. The
  /// hardware is called where `onAudioThread` takes work: one thread, in the order of the calls, until this
  /// object has ended and what it has posted is done. The referents outlive that.
  MasterControl(AudioHardware& hardware, Relay::Post onAudioThread, Executor& mainThread,
                std::function<void(const State&)> changed);
  ~MasterControl();
  MasterControl(const MasterControl&) = delete;
  MasterControl& operator=(const MasterControl&) = delete;

  /// Reads once more, for a server that was not there at the first time. Changes are heard of by themselves.
  void refresh();

  /// By so many percentage points. Nothing where the device has no volume.
  void change(int points);

  /// To 0, or back to what it was before; to 50 percent where that is not known.
  void toggleMute();

 private:
  class Device;

  const Relay::Post onAudioThread_;
  std::shared_ptr<Device> device_;
  Relay relay_;
};

} // namespace sonvel
