#pragma once

#include <QLatin1String>

/// The names of the D-Bus interface by which other programs read and control the mixer. docs/command-line.md
/// explains it; com.quellmarsh.sonvel.Mixer1.xml has the types.
namespace sonvel::remote {

inline constexpr QLatin1String kService{"com.quellmarsh.sonvel"};
inline constexpr QLatin1String kSimulatedService{"com.quellmarsh.sonvel.Simulated"}; ///< with --simulated
inline constexpr QLatin1String kPath{"/com/quellmarsh/sonvel/Mixer"};
inline constexpr QLatin1String kInterface{"com.quellmarsh.sonvel.Mixer1"};
inline constexpr QLatin1String kPropertiesInterface{"org.freedesktop.DBus.Properties"};

/// The errors that methods return.
namespace error {

inline constexpr QLatin1String kNotFound{"com.quellmarsh.sonvel.Error.NotFound"};
inline constexpr QLatin1String kAmbiguous{"com.quellmarsh.sonvel.Error.Ambiguous"};
inline constexpr QLatin1String kNotPermitted{"com.quellmarsh.sonvel.Error.NotPermitted"};
inline constexpr QLatin1String kNotAdjustable{"com.quellmarsh.sonvel.Error.NotAdjustable"};
inline constexpr QLatin1String kLeaving{
    "com.quellmarsh.sonvel.Error.Leaving"}; ///< the program is about to end
inline constexpr QLatin1String kAccessDenied{"org.freedesktop.DBus.Error.AccessDenied"}; ///< to a sandbox
inline constexpr QLatin1String kInvalidArguments{"org.freedesktop.DBus.Error.InvalidArgs"};
inline constexpr QLatin1String kUnknownMethod{"org.freedesktop.DBus.Error.UnknownMethod"};
inline constexpr QLatin1String kUnknownProperty{"org.freedesktop.DBus.Error.UnknownProperty"};
inline constexpr QLatin1String kReadOnly{"org.freedesktop.DBus.Error.PropertyReadOnly"};

} // namespace error
} // namespace sonvel::remote
