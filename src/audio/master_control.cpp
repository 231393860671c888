#include "audio/master_control.h"

#include "audio/output_devices.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <vector>

namespace sonvel {
namespace {

int toPercent(float volume) {
  return static_cast<int>(std::lround(volume * 100.0F));
}

} // namespace

/// The part that runs on the audio thread. Listeners only post to that thread, so removing them cannot
/// deadlock with a listener that waits for this object.
class MasterControl::Device : public std::enable_shared_from_this<Device> {
 public:
  Device(AudioHardware& hardware, Relay::Post onAudioThread, std::function<void(State)> report)
      : hardware_(hardware)
      , onAudioThread_(std::move(onAudioThread))
      , report_(std::move(report)) {}

  void look() {
    const std::scoped_lock lock(mutex_);
    if (hasEnded_) return;
    const auto id = defaultOutputDeviceID(hardware_);
    listen(id.value_or(kAudioObjectUnknown));
    State state;
    const auto devices = enumerateOutputDevices(hardware_);
    const auto found = std::ranges::find(devices, id, &AudioOutputDevice::deviceID);
    if (found != devices.end()) state.device = found->name;
    if (const auto volume = readMasterVolume(hardware_)) state.percent = toPercent(*volume);
    report_(std::move(state));
  }

  void change(int points) {
    if (const auto volume = readMasterVolume(hardware_))
      writeMasterVolume(hardware_,
                        static_cast<float>(std::clamp(toPercent(*volume) + points, 0, 100)) / 100.0F);
    look();
  }

  void toggleMute() {
    const auto volume = readMasterVolume(hardware_);
    if (volume && *volume > 0.0F) before_ = *volume;
    if (volume) writeMasterVolume(hardware_, *volume > 0.0F ? 0.0F : before_);
    look();
  }

  /// Any thread. Removes all listeners.
  void end() {
    const std::scoped_lock lock(mutex_);
    hasEnded_ = true;
    forgetListeners();
  }

 private:
  void listen(AudioObjectID device) {
    if (!listeners_.empty() && device == heard_) return;
    forgetListeners();
    heard_ = device;
    add(kSystemObject, {property::kDefaultOutputDevice, scope::kGlobal, kElementMain});
    for (const auto element : {kElementMain, kElementLeft, kElementRight})
      if (device != kAudioObjectUnknown)
        add(device, {property::kDeviceVolumeScalar, scope::kOutput, element});
  }

  void add(AudioObjectID object, const PropertyAddress& address) {
    PropertyListenerID id = 0;
    const auto onChange = [post = onAudioThread_, weak = weak_from_this()](AudioObjectID,
                                                                           const PropertyAddress&) {
      post([weak] {
        if (const auto self = weak.lock()) self->look();
      });
    };
    if (hardware_.addPropertyListener(object, address, onChange, id) == kNoError) listeners_.push_back(id);
  }

  void forgetListeners() {
    for (const auto id : listeners_)
      hardware_.removePropertyListener(id);
    listeners_.clear();
  }

  AudioHardware& hardware_;
  const Relay::Post onAudioThread_;
  const std::function<void(State)> report_;
  float before_ = 0.5F;
  std::mutex mutex_; ///< guards the members below
  std::vector<PropertyListenerID> listeners_;
  AudioObjectID heard_ = kAudioObjectUnknown;
  bool hasEnded_ = false;
};

MasterControl::MasterControl(AudioHardware& hardware, Relay::Post onAudioThread, Executor& mainThread,
                             std::function<void(const State&)> changed)
    : onAudioThread_(std::move(onAudioThread))
    , relay_(mainThread) {
  auto report = relay_.bind<State>(
      [changed = std::move(changed), last = std::optional<State>()](const State& state) mutable {
        if (last == state) return;
        last = state;
        changed(state);
      });
  device_ = std::make_shared<Device>(hardware, onAudioThread_, std::move(report));
  refresh();
}

MasterControl::~MasterControl() {
  device_->end();
}

void MasterControl::refresh() {
  onAudioThread_([device = device_] { device->look(); });
}

void MasterControl::change(int points) {
  onAudioThread_([device = device_, points] { device->change(points); });
}

void MasterControl::toggleMute() {
  onAudioThread_([device = device_] { device->toggleMute(); });
}

} // namespace sonvel
