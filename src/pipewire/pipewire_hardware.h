#pragma once

#include "platform/application_identity.h"
#include "platform/audio_clients.h"
#include "platform/audio_hardware.h"
#include "platform/audio_server.h"

#include <memory>

namespace sonvel::pipewire {

/// The audio system of a desktop that runs PipeWire and WirePlumber.
///
/// A tap is a node that the session manager moves the process's streams into; an aggregate device is that tap
/// and a sink joined by a filter in this process; process objects are the programs that have an output
/// stream, under the same ID for as long as this object lives. What is made here stays wanted until it is
/// destroyed: streams that a tapped process opens later join the tap, a sink that went away is joined again
/// when it is back, and a server or session manager that starts again is told everything anew. A muted tap
/// takes its streams when its IOProc has started and returns them when it stops, each between two cycles.
/// Starting waits for the IOProc's own links, at most a fifth of a second: on a device that takes longer to
/// open the streams come when it is open.
///
/// A stream that can't be moved stays where it is, and is heard there unaltered. A stream that its user moves
/// elsewhere while it is tapped stays in the tap; the device becomes its process's chosen device.
///
/// While the server restricts us no tap can be made and no IOProc started: both give kIllegalOperation. When
/// it takes our rights away, the connection is dropped, with which the server takes back all that was made
/// here; destroying it then has nothing left to do. Six seconds later the connection is made again.
class PipeWireHardware final : public AudioHardware, public AudioClients {
 public:
  /// Connects to the server that the environment names, and waits up to two seconds for it. Without one all
  /// calls give kNotRunning until one comes. `identity` must outlive this object and is asked for the bundle
  /// identifier of processes. Throws std::runtime_error if the machine has no thread
  /// left or the library can't be set up.
  explicit PipeWireHardware(const ApplicationIdentity& identity);

  /// Gives every stream back, waiting up to two seconds for it.
  ~PipeWireHardware() override;

  PipeWireHardware(const PipeWireHardware&) = delete;
  PipeWireHardware& operator=(const PipeWireHardware&) = delete;

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

  std::vector<AudioClient> audioClients() const override;

  /// The connection and what the server lets us do. Lives as long as this object.
  AudioServer& server() noexcept;

 private:
  class State;
  class PropertyReader;

  OSStatus setTapProcesses(AudioObjectID object, std::span<const std::byte> data);

  std::unique_ptr<State> state_;
};

} // namespace sonvel::pipewire
