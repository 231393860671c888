#pragma once

#include "platform/application_identity.h"
#include "platform/audio_clients.h"
#include "platform/audio_hardware.h"
#include "platform/audio_server.h"

#include <memory>

namespace sonvel::pipewire {

/// The audio system of a desktop with PipeWire and WirePlumber.
///
/// A tap is a node into which the session manager moves the process's streams. An aggregate device is a
/// filter in this process between that tap and a sink. Process objects are the programs with an output
/// stream; they keep their ID during this object's lifetime. What is created here stays desired until it is
/// destroyed: later streams of a tapped process join the tap, a sink that returns is linked again, and a
/// restarted server or session manager gets everything anew. A muted tap takes its streams when its IOProc
/// has started and returns them when it stops, each between two cycles. Starting waits for the IOProc's own
/// links, at most 200 ms; if the device takes longer to open, the streams follow when it is open.
///
/// A stream that can't be moved stays where it is and is heard there unchanged. A stream that the user moves
/// elsewhere while it is tapped stays in the tap; the device becomes its process's chosen device.
///
/// While the server restricts us no tap can be created and no IOProc started: both give kIllegalOperation.
/// When it withdraws our rights, we disconnect and the server removes our objects; destroying them afterwards
/// succeeds. Six seconds later we connect again.
class PipeWireHardware final : public AudioHardware, public AudioClients {
 public:
  /// Connects to the server named by the environment; waits up to two seconds for it. Without a server all
  /// calls give kNotRunning until one comes. `identity` must outlive this object and supplies the bundle
  /// identifiers. Throws std::runtime_error if no thread can be created or the library can't be set up.
  explicit PipeWireHardware(const ApplicationIdentity& identity);

  /// Gives every stream back; waits up to two seconds.
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

  /// The connection and our rights. Lives as long as this object.
  AudioServer& server() noexcept;

 private:
  class State;
  class PropertyReader;

  OSStatus setTapProcesses(AudioObjectID object, std::span<const std::byte> data);

  std::unique_ptr<State> state_;
};

} // namespace sonvel::pipewire
