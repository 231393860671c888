#pragma once

#include "audio/audio_app.h"
#include "audio/audio_environment.h"

namespace sonvel {

/// The processes that play sound now and that the user would recognise, without this program, in the audio
/// system's order. Helper processes are listed separately. Reads everything anew; any thread except an
/// IOProc's; blocks as the audio system does. Unreadable entries are left out.
std::vector<AudioApp> enumerateAudibleApps(const AudioEnvironment& environment);

/// The kernel's short name of a process; none if it does not exist. Any thread; does not block.
std::optional<std::string> executableName(const ProcessInformation& processes, std::int32_t pid);

} // namespace sonvel
