#pragma once

#include "platform/audio_properties.h"
#include "platform/audio_types.h"

#include <optional>

namespace sonvel {

/// The audio system: its objects, their properties, and the taps, aggregate devices and IOProcs that this
/// program makes in it.
///
/// Every call may come from any thread but an IOProc's, blocks until the audio system has answered, and is
/// answered within two seconds: a system that is dead or does not answer gives a status, never a hang. None
/// throws. Calls may run at the same time; the system puts them in an order.
class AudioHardware {
 public:
  virtual ~AudioHardware() = default;

  /// The size in bytes of a property whose value is a list or a number. On failure `sizeBytes` is unchanged.
  virtual OSStatus getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                       std::uint32_t& sizeBytes) = 0;

  /// Reads a number or a list into `data`. `sizeBytes` becomes the bytes written, at most the size of `data`:
  /// a list that has grown since its size was asked is cut. A single number into a `data` of another size
  /// fails with kBadPropertySize.
  virtual OSStatus getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                   std::uint32_t& sizeBytes, std::span<std::byte> data) = 0;

  /// Reads a property whose value is a string. Success with no `text` is a null reference: the object has the
  /// property but no value for it.
  virtual OSStatus getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                   std::optional<std::string>& text) = 0;

  /// Whether the object has the property at all.
  virtual bool hasProperty(AudioObjectID object, const PropertyAddress& address) = 0;

  /// Whether the property can be written now.
  virtual OSStatus isPropertySettable(AudioObjectID object, const PropertyAddress& address,
                                      bool& isSettable) = 0;

  /// Writes a number or a list.
  virtual OSStatus setPropertyData(AudioObjectID object, const PropertyAddress& address,
                                   std::span<const std::byte> data) = 0;

  /// Has `listener` called after each change of a property. It tells that something has changed, not what:
  /// the new value is to be read. Changes that come close together may be told once, our own changes are told
  /// too. `listener` runs on a thread of the audio system, one at a time; it must not block and must not call
  /// the audio system. The listeners of an object end with it, without a call; those of the system object
  /// outlive a lost server and are called when it is back. An unknown property gives kUnknownProperty, an
  /// unknown object kBadObject.
  virtual OSStatus addPropertyListener(AudioObjectID object, const PropertyAddress& address,
                                       PropertyListener listener, PropertyListenerID& id) = 0;

  /// Ends a listener, also one whose object is gone: after this it is not running and is not called again.
  /// Not from inside a listener.
  virtual OSStatus removePropertyListener(PropertyListenerID id) = 0;

  /// Begins a configuration: until it is committed, destroying and making taps, aggregate devices and IOProcs
  /// answers as ever, but what is heard stays as it was. Destroyed taps keep their processes and stopped
  /// IOProcs may be called on until then. kIllegalOperation inside another configuration.
  virtual OSStatus beginConfiguration() = 0;

  /// Lets what was changed since beginConfiguration take effect together: a process goes from its old tap
  /// into its new one without being heard at its own device in between, and back to its own device where
  /// there is no new one. After it no stopped block is running or called again. A failure still ends the
  /// configuration.
  virtual OSStatus commitConfiguration() = 0;

  /// Makes a tap on the processes that `description` names. On success `tap` is its object, with a kTapUID.
  ///
  /// A muted tap takes its processes off their own device no later than when a started IOProc reads it, and
  /// gives them back no later than when destroyProcessTap has succeeded. In between the system chooses the
  /// moments, so that it can hand over without a gap. Streams that a process opens later join the tap, and so
  /// do processes that appear later under one of its bundle IDs, before they are heard. A muted tap that
  /// names no process but bundle IDs stands by: it also takes the processes that are there under these, at
  /// once, and keeps them silent until another tap takes them or it is destroyed. A stream that nobody may
  /// move stays where it is (kTapIsPartial); no call waits for a stream.
  virtual OSStatus createProcessTap(const TapDescription& description, AudioObjectID& tap) = 0;

  /// Removes a tap. A tap that the audio system has lost meanwhile counts as removed.
  virtual OSStatus destroyProcessTap(AudioObjectID tap) = 0;

  /// Makes a device out of taps and real devices. The first sub-device plays what its IOProcs write. Unknown
  /// sub-devices give kBadDevice, unknown taps kBadObject.
  virtual OSStatus createAggregateDevice(const AggregateDeviceDescription& description,
                                         AudioObjectID& device) = 0;

  /// Removes an aggregate device, with the IOProcs that are still on it. One that the audio system has lost
  /// meanwhile counts as removed.
  virtual OSStatus destroyAggregateDevice(AudioObjectID device) = 0;

  /// Installs `block` on an aggregate device. From deviceStart on it is called on `queue` for each cycle,
  /// with the audio of the aggregate's taps as input and the buffers of its device as output, silent when
  /// handed over. A copy of `block` is kept until the IOProc is destroyed.
  virtual OSStatus createIOProcID(AudioObjectID device, const IOQueue& queue, IOProcBlock block,
                                  IOProcID& ioProc) = 0;

  /// Removes an IOProc, stopping it if it runs, and releases its block.
  virtual OSStatus destroyIOProcID(AudioObjectID device, IOProcID ioProc) = 0;

  /// Lets an installed IOProc run. Starting one that runs changes nothing.
  virtual OSStatus deviceStart(AudioObjectID device, IOProcID ioProc) = 0;

  /// Stops an IOProc. After success its block is not running and is not called again. Stopping one that does
  /// not run changes nothing.
  virtual OSStatus deviceStop(AudioObjectID device, IOProcID ioProc) = 0;
};

} // namespace sonvel
