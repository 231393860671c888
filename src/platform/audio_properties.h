#pragma once

#include "platform/audio_types.h"

namespace sonvel {

/// The object with the properties of the whole audio system.
inline constexpr AudioObjectID kSystemObject = 1;

/// The channel that a property belongs to: 0 is the whole object, 1 and 2 are the first two channels of a
/// device.
inline constexpr std::uint32_t kElementMain = 0;
inline constexpr std::uint32_t kElementLeft = 1;
inline constexpr std::uint32_t kElementRight = 2;

namespace scope {
inline constexpr auto kGlobal = fourCharCode("glob");
inline constexpr auto kOutput = fourCharCode("outp");
} // namespace scope

/// Selectors of the audio system's properties, with the type of the value. Strings are read with the string
/// overload of AudioHardware::getPropertyData; all other values are in native byte order.
namespace property {
// Of the system object.
inline constexpr auto kProcessObjectList = fourCharCode("prs#");   ///< AudioObjectID[]
inline constexpr auto kDevices = fourCharCode("dev#");             ///< AudioObjectID[]
inline constexpr auto kDefaultOutputDevice = fourCharCode("dOut"); ///< AudioObjectID, 0 for none

// Of a process object.
inline constexpr auto kProcessIsRunningOutput = fourCharCode("piro"); ///< u32, 0 while it plays nothing
inline constexpr auto kProcessPID = fourCharCode("ppid");             ///< i32
inline constexpr auto kProcessBundleID = fourCharCode("pbid");        ///< string

/// AudioObjectID of the device that something other than this program chose for the process (another mixer,
/// the session manager's memory, an effects program), also while it is tapped; 0 while it follows the
/// default.
inline constexpr auto kProcessChosenDevice = fourCharCode("pcho");

/// u32 that grows, over all processes, with each such choice that is made while the process is tapped, also
/// of the device that was chosen before; 0: none was made.
inline constexpr auto kProcessChoiceSerial = fourCharCode("pchs");

// Of a device.
inline constexpr auto kDeviceStreams = fourCharCode("stm#"); ///< u32[], empty without streams in the scope
inline constexpr auto kDeviceUID = fourCharCode("uid ");     ///< string, the same across restarts
inline constexpr auto kObjectName = fourCharCode("lnam");    ///< string
inline constexpr auto kDeviceVolumeScalar = fourCharCode("volm"); ///< f32, 0.0 to 1.0, output scope

// Of a tap.
inline constexpr auto kTapUID = fourCharCode("tuid");         ///< string
inline constexpr auto kTapProcessList = fourCharCode("tpr#"); ///< AudioObjectID[], settable
inline constexpr auto kTapIsPartial = fourCharCode("tprt");   ///< u32, 1 while some stream could not be taken
} // namespace property

} // namespace sonvel
