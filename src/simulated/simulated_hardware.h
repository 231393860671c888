#pragma once

#include "platform/audio_hardware.h"
#include "simulated/calls.h"
#include "simulated/objects.h"
#include "simulated/property_value.h"
#include "simulated/scripts.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace sonvel::simulated {

/// An audio system in memory. It holds the processes and devices that its script names, behaves as
/// AudioHardware says, and plays when runCycle is called: then the IOProcs run, and what each device would
/// have made audible can be asked for.
///
/// Where the contract leaves the moment open the strictest one is taken: a muted tap silences its processes
/// from its creation to its destruction. An object ID is never given twice, unless a script asks for it.
/// Property listeners are called on the thread that has changed something, before its call returns.
///
/// Every function may be called from any thread, but none from an IOProc's block.
class SimulatedHardware : public AudioHardware {
 public:
  // Script: processes.

  /// A process appears, last in the list. Returns its object.
  AudioObjectID addProcess(ProcessScript process);

  /// A process ends. Taps on it stay and are silent; they hear a process that comes with the same object ID
  /// or one of their bundle IDs.
  void removeProcess(AudioObjectID process);

  void setPlaying(AudioObjectID process, bool isPlaying);

  /// Replaces all streams of the process by one.
  void setSignal(AudioObjectID process, Signal signal);

  /// The process opens one more stream.
  void addStream(AudioObjectID process, Signal signal);

  /// Replaces the streams of the process that nobody may move.
  void setFixedStreams(AudioObjectID process, std::vector<Signal> signals);

  /// The user sends the process to a device in another mixer, or lets it follow the default device again. A
  /// tapped process is heard there only after its tap has gone.
  void setProcessOutput(AudioObjectID process, std::optional<std::string> deviceUID);

  // Script: devices.

  /// A device appears, last of the real ones. Returns its object. The first with output streams becomes the
  /// default device.
  AudioObjectID addDevice(DeviceScript device);

  /// A device vanishes. While it is gone aggregates on it don't run, what plays to it is lost, and it is not
  /// the default device.
  void removeDevice(const std::string& uid);

  /// A device that has vanished comes back as it was, as a new object. Returns the object.
  AudioObjectID returnDevice(const std::string& uid);

  /// None: there is no default device.
  void setDefaultDevice(std::optional<std::string> uid);

  /// The object of a present device or aggregate; 0 if there is none.
  AudioObjectID deviceWithUID(const std::string& uid) const;

  // Playing.

  /// Runs one I/O cycle of everything: the blocks of all started IOProcs, one after the other in the order
  /// of their creation, on the caller's thread. Each has one buffer of interleaved stereo for each tap of its
  /// aggregate as input and one as output.
  void runCycle(std::uint32_t frames = 512);

  /// What the device made audible in the last cycle, before its own volume: the processes that play to it and
  /// are not silenced by a tap, and what IOProcs wrote. Empty for a device that was not there.
  std::vector<Frame> heard(const std::string& deviceUID) const;

  // Looking.

  /// What exists, in the order of creation.
  std::vector<Tap> taps() const;
  std::vector<Aggregate> aggregates() const;
  std::vector<IOProc> ioProcs() const;

  /// Whether there is no tap, no aggregate device and no IOProc.
  bool isClean() const;

  // AudioHardware.

  OSStatus getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                               std::uint32_t& sizeBytes) override;
  OSStatus getPropertyData(AudioObjectID object, const PropertyAddress& address, std::uint32_t& sizeBytes,
                           std::span<std::byte> data) override;
  OSStatus getPropertyData(AudioObjectID object, const PropertyAddress& address,
                           std::optional<std::string>& text) override;
  bool hasProperty(AudioObjectID object, const PropertyAddress& address) override;
  OSStatus isPropertySettable(AudioObjectID object, const PropertyAddress& address,
                              bool& isSettable) override;
  OSStatus setPropertyData(AudioObjectID object, const PropertyAddress& address,
                           std::span<const std::byte> data) override;
  OSStatus addPropertyListener(AudioObjectID object, const PropertyAddress& address,
                               PropertyListener listener, PropertyListenerID& id) override;
  OSStatus removePropertyListener(PropertyListenerID id) override;
  OSStatus beginConfiguration() override;
  OSStatus commitConfiguration() override;
  OSStatus createProcessTap(const TapDescription& description, AudioObjectID& tap) override;
  OSStatus destroyProcessTap(AudioObjectID tap) override;
  OSStatus createAggregateDevice(const AggregateDeviceDescription& description,
                                 AudioObjectID& device) override;
  OSStatus destroyAggregateDevice(AudioObjectID device) override;
  OSStatus createIOProcID(AudioObjectID device, const IOQueue& queue, IOProcBlock block,
                          IOProcID& ioProc) override;
  OSStatus destroyIOProcID(AudioObjectID device, IOProcID ioProc) override;
  OSStatus deviceStart(AudioObjectID device, IOProcID ioProc) override;
  OSStatus deviceStop(AudioObjectID device, IOProcID ioProc) override;

 protected:
  using Work = std::function<OSStatus(HardwareCall&)>;

  /// Every call comes through here. Lets `work` answer it, under the lock, and then tells the listeners.
  virtual OSStatus carryOut(HardwareCall call, const Work& work);

 private:
  struct Process {
    AudioObjectID id = kAudioObjectUnknown;
    ProcessScript script;
  };

  struct Device {
    AudioObjectID id = kAudioObjectUnknown;
    DeviceScript script;
    bool isPresent = true;
  };

  struct InstalledIOProc {
    IOProc what;
    std::shared_ptr<const IOProcBlock> block;
  };

  /// What was made through AudioHardware.
  struct Graph {
    std::vector<Tap> taps = {};
    std::vector<Aggregate> aggregates = {};
    std::vector<InstalledIOProc> ioProcs = {};
  };

  using Property = std::pair<AudioObjectID, PropertyAddress>;

  struct Listener {
    PropertyListenerID id;
    Property property;
    PropertyListener call;
  };

  class Change;
  struct Cycle;
  // All of these under the lock.
  AudioObjectID allotObject(AudioObjectID wished);
  ProcessScript& processScript(AudioObjectID process);
  Device* knownDevice(const std::string& uid);
  const Device* presentDevice(const std::string& uid) const;
  bool isDevice(AudioObjectID object) const;
  OSStatus findProperty(AudioObjectID object, const PropertyAddress& address, PropertyValue& value) const;
  std::optional<PropertyValue> systemProperty(const PropertyAddress& address) const;
  const VolumeControl* volumeControl(AudioObjectID object, const PropertyAddress& address) const;
  OSStatus checkAggregate(const AggregateDeviceDescription& description) const;
  OSStatus checkIsAggregate(AudioObjectID object) const;
  InstalledIOProc* installedIOProc(AudioObjectID device, IOProcID ioProc);
  void stopAndWait(InstalledIOProc& ioProc);
  void waitForBlock();
  bool isRunningStopped() const;
  const Graph& playingGraph() const;
  bool isSilenced(const Process& process) const;
  bool isPartial(const Tap& tap) const;
  AudioObjectID chosenDevice(const ProcessScript& process) const;
  OSStatus setTapProcesses(AudioObjectID tap, std::span<const std::byte> data);
  OSStatus writeVolume(AudioObjectID device, const PropertyAddress& address, std::span<const std::byte> data);
  void changed(AudioObjectID object, std::uint32_t selector);
  void devicesChanged();
  void endListeners(AudioObjectID object);

  /// Not under the lock.
  void tellListeners();

  void playProcesses(Cycle& cycle) const;
  std::vector<float> tapSamples(const Cycle& cycle, const std::string& tapUID) const;
  void playIOProc(Cycle& cycle, IOProcID id, std::unique_lock<std::mutex>& lock);
  void callBlock(InstalledIOProc ioProc, const AudioTimeStamp& start, std::vector<std::vector<float>>& inputs,
                 std::vector<float>& output, std::unique_lock<std::mutex>& lock);

  mutable std::mutex mutex_; ///< guards everything below but is not held while a block runs
  std::vector<Process> processes_;
  std::vector<Device> devices_;
  std::optional<std::string> defaultDeviceUID_;
  Graph graph_;
  std::optional<Graph> graphBefore_; ///< what plays while a configuration is open
  std::vector<Listener> listeners_;
  std::vector<Property> changes_; ///< that the listeners have not been told
  PropertyListenerID nextListenerID_ = 1;
  AudioObjectID nextObjectID_ = 100;
  IOProcID nextIOProcID_ = 1;
  std::map<std::string, std::vector<Frame>> heard_;

  IOProcID runningIOProc_ = 0;                ///< whose block runs now; 0: none
  std::condition_variable_any blockReturned_; ///< runningIOProc_ has become 0

  std::mutex listenerMutex_; ///< held while a listener runs
  std::mutex cycleMutex_;    ///< held for the length of a cycle: one runs at a time
  std::uint64_t frame_ = 0;  ///< the first of the next cycle; guarded by cycleMutex_
};

} // namespace sonvel::simulated
