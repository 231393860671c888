#pragma once

#include "platform/audio_properties.h"
#include "platform/audio_types.h"

#include <optional>

namespace sonvel {

/// The audio system: its objects, their properties, and the taps, aggregate devices and IOProcs that this
/// program creates.
///
/// Every call may come from any thread except an IOProc's. It blocks until the audio system has answered, at
/// most two seconds: a dead or silent system gives an error status. None throws. Concurrent calls are
/// allowed; the system puts them in an order.
class AudioHardware {
 public:
  virtual ~AudioHardware() = default;

  /// The size in bytes of a property whose value is a list or a number. On failure `sizeBytes` is unchanged.
  virtual OSStatus getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                       std::uint32_t& sizeBytes) = 0;

  /// Reads a number or a list into `data`. `sizeBytes` becomes the number of bytes written, at most the size
  /// of `data`: a list that has grown since its size was read is cut. Reading a single number into `data` of
  /// another size fails with kBadPropertySize.
  virtual OSStatus getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                   std::uint32_t& sizeBytes, std::span<std::byte> data) = 0;

  /// Reads a string property. Success with an empty `text` means that the object has the property but no
  /// value for it.
  virtual OSStatus getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                   std::optional<std::string>& text) = 0;

  /// Whether the object has the property.
  virtual bool hasProperty(AudioObjectID object, const PropertyAddress& address) = 0;

  /// Whether the property can be written.
  virtual OSStatus isPropertySettable(AudioObjectID object, const PropertyAddress& address,
                                      bool& isSettable) = 0;

  /// Writes a number or a list.
  virtual OSStatus setPropertyData(AudioObjectID object, const PropertyAddress& address,
                                   std::span<const std::byte> data) = 0;

  /// Calls `listener` after each change of a property. The listener reads the new value itself. Changes close
  /// together may give one call; changes made by this program give calls too. `listener` runs on a thread of
  /// the audio system, one at a time; it must not block and must not call the audio system. An object's
  /// listeners end with the object, without a call. Listeners on the system object survive the loss of the
  /// server and are called when it is back. An unknown property gives kUnknownProperty, an unknown object
  /// kBadObject.
  virtual OSStatus addPropertyListener(AudioObjectID object, const PropertyAddress& address,
                                       PropertyListener listener, PropertyListenerID& id) = 0;

  /// Removes a listener, also if its object is gone. After the call it is not running and is not called
  /// again. Must not be called from a listener.
  virtual OSStatus removePropertyListener(PropertyListenerID id) = 0;

  /// Begins a configuration. Until commitConfiguration(), taps, aggregate devices and IOProcs can be created
  /// and destroyed, but what is heard does not change: destroyed taps keep their processes, and stopped
  /// IOProcs may still be called. kIllegalOperation inside another configuration.
  virtual OSStatus beginConfiguration() = 0;

  /// Applies everything changed since beginConfiguration() at once. A process moves from its old tap directly
  /// into its new one, without being heard at its own device in between, or back to its own device if it has
  /// no new tap. Afterwards no stopped block is running or called again. A failure ends the configuration
  /// too.
  virtual OSStatus commitConfiguration() = 0;

  /// Creates a tap on the processes that `description` names. On success `tap` is its object, with a kTapUID.
  ///
  /// A muted tap takes its processes off their own device at the latest when a started IOProc reads the tap,
  /// and gives them back at the latest when destroyProcessTap() has succeeded. In between the system chooses
  /// the time, so that it can hand over without a gap. Streams that a process opens later join the tap before
  /// they are heard; so do later processes with one of its bundle IDs. A muted tap that names bundle IDs but
  /// no process is a standby tap: it takes the existing and later processes with these IDs at once and keeps
  /// them silent until another tap takes them or it is destroyed. A stream that must not be moved stays where
  /// it is (kTapIsPartial). No call waits for a stream.
  virtual OSStatus createProcessTap(const TapDescription& description, AudioObjectID& tap) = 0;

  /// Removes a tap. Succeeds if the audio system has lost the tap already.
  virtual OSStatus destroyProcessTap(AudioObjectID tap) = 0;

  /// Creates a device out of taps and real devices. The first sub-device plays what the IOProcs write.
  /// Unknown sub-devices give kBadDevice, unknown taps kBadObject, a muted tap among others
  /// kIllegalOperation.
  virtual OSStatus createAggregateDevice(const AggregateDeviceDescription& description,
                                         AudioObjectID& device) = 0;

  /// Removes an aggregate device and its IOProcs. Succeeds if the audio system has lost the device already.
  virtual OSStatus destroyAggregateDevice(AudioObjectID device) = 0;

  /// Installs `block` on an aggregate device. After deviceStart() it is called on `queue` once per cycle,
  /// with the audio of the aggregate's taps as input and the buffers of its device as output. A copy of
  /// `block` is kept until the IOProc is destroyed.
  virtual OSStatus createIOProcID(AudioObjectID device, const IOQueue& queue, IOProcBlock block,
                                  IOProcID& ioProc) = 0;

  /// Removes an IOProc, stops it if needed, and releases its block.
  virtual OSStatus destroyIOProcID(AudioObjectID device, IOProcID ioProc) = 0;

  /// Starts an installed IOProc. No effect if it runs. kIllegalOperation while another one reads its muted
  /// tap.
  virtual OSStatus deviceStart(AudioObjectID device, IOProcID ioProc) = 0;

  /// Stops an IOProc. After success its block is not running and is not called again. No effect if it does
  /// not run.
  virtual OSStatus deviceStop(AudioObjectID device, IOProcID ioProc) = 0;
};

} // namespace sonvel
