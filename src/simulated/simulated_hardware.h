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

/// An audio system in memory with scripted processes and devices. Behaves as AudioHardware requires and plays
/// when runCycle() is called: the IOProcs run, and heard() tells what each device made audible.
///
/// Where the contract leaves the time open it takes the strictest: a muted tap silences its processes from
/// its creation to its destruction. Object IDs are not reused unless a script asks for it. Property listeners
/// are called on the thread that makes the change, before its call returns.
///
/// Any thread may call any function, but not from an IOProc's block.
class SimulatedHardware : public AudioHardware {
 public:
  /// Adds a process at the end of the list. Returns its object.
  AudioObjectID addProcess(ProcessScript process);

  /// Ends a process. Taps on it stay and are silent; they capture a later process with the same object ID or
  /// one of their bundle IDs.
  void removeProcess(AudioObjectID process);

  void setPlaying(AudioObjectID process, bool isPlaying);

  /// Replaces all streams of the process with one.
  void setSignal(AudioObjectID process, Signal signal);

  /// Opens one more stream.
  void addStream(AudioObjectID process, Signal signal);

  /// Replaces the streams that must not be moved.
  void setFixedStreams(AudioObjectID process, std::vector<Signal> signals);

  /// The user chooses a device for the process in another mixer, or lets it follow the default device again.
  /// A tapped process is heard there only after its tap has gone.
  void setProcessOutput(AudioObjectID process, std::optional<std::string> deviceUID);

  /// Adds a device after the other real ones. Returns its object. The first with output streams becomes the
  /// default device.
  AudioObjectID addDevice(DeviceScript device);

  /// Removes a device. Meanwhile aggregates on it don't run, sound sent to it is lost, and it is not the
  /// default device.
  void removeDevice(const std::string& uid);

  /// Returns a removed device unchanged as a new object.
  AudioObjectID returnDevice(const std::string& uid);

  /// None: no default device.
  void setDefaultDevice(std::optional<std::string> uid);

  /// The object of a present device or aggregate; 0 if there is none.
  AudioObjectID deviceWithUID(const std::string& uid) const;

  /// Runs one I/O cycle: the blocks of all started IOProcs in the order of creation, on the calling thread.
  /// Each has one interleaved stereo buffer per tap of its aggregate as input, and one as output.
  void runCycle(std::uint32_t frames = 512);

  /// What the device made audible in the last cycle, before its own volume: processes that no tap silences,
  /// and the output of IOProcs. Empty if the device was missing.
  std::vector<Frame> heard(const std::string& deviceUID) const;

  /// The existing objects, in the order of creation.
  std::vector<Tap> taps() const;
  std::vector<Aggregate> aggregates() const;
  std::vector<IOProc> ioProcs() const;

  /// Whether no tap, aggregate device or IOProc exists.
  bool isClean() const;

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

  /// Every call runs through here: runs `work` with the lock held, then calls the listeners.
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

  /// The objects created through AudioHardware.
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
  // With the lock held.
  AudioObjectID allotObject(AudioObjectID wished);
  ProcessScript& processScript(AudioObjectID process);
  Device* knownDevice(const std::string& uid);
  const Device* presentDevice(const std::string& uid) const;
  bool isDevice(AudioObjectID object) const;
  OSStatus findProperty(AudioObjectID object, const PropertyAddress& address, PropertyValue& value) const;
  std::optional<PropertyValue> systemProperty(const PropertyAddress& address) const;
  const VolumeControl* volumeControl(AudioObjectID object, const PropertyAddress& address) const;
  OSStatus checkAggregate(const AggregateDeviceDescription& description) const;
  const Tap* tapWithUID(const std::string& uid) const;
  bool isReadAlready(AudioObjectID device) const;
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

  /// Without the lock.
  void tellListeners();

  void playProcesses(Cycle& cycle) const;
  std::vector<float> tapSamples(const Cycle& cycle, const std::string& tapUID) const;
  void playIOProc(Cycle& cycle, IOProcID id, std::unique_lock<std::mutex>& lock);
  void callBlock(InstalledIOProc ioProc, const AudioTimeStamp& start, std::vector<std::vector<float>>& inputs,
                 std::vector<float>& output, std::unique_lock<std::mutex>& lock);

  mutable std::mutex mutex_; ///< guards everything below; not held while a block runs
  std::vector<Process> processes_;
  std::vector<Device> devices_;
  std::optional<std::string> defaultDeviceUID_;
  std::uint32_t lastChoiceSerial_ = 0;
  Graph graph_;
  std::optional<Graph> graphBefore_; ///< what plays while a configuration is open
  std::vector<Listener> listeners_;
  std::vector<Property> changes_; ///< changes not yet passed to the listeners
  PropertyListenerID nextListenerID_ = 1;
  AudioObjectID nextObjectID_ = 100;
  IOProcID nextIOProcID_ = 1;
  std::map<std::string, std::vector<Frame>> heard_;

  IOProcID runningIOProc_ = 0;                ///< whose block is running; 0: none
  std::condition_variable_any blockReturned_; ///< runningIOProc_ became 0

  std::mutex listenerMutex_; ///< held while a listener runs
  std::mutex cycleMutex_;    ///< held during a cycle: one at a time
  std::uint64_t frame_ = 0;  ///< first frame of the next cycle; guarded by cycleMutex_
};

} // namespace sonvel::simulated
