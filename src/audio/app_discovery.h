#pragma once

#include "audio/audio_app.h"
#include "audio/audio_environment.h"

namespace sonvel {

/// The processes that play sound now and that the user would recognise, without this program itself, in the
/// audio system's order. Helper processes stay on their own. Reads everything anew; any thread but an
/// IOProc's, blocks as the audio system does. What can't be read is left out.
std::vector<AudioApp> enumerateAudibleApps(const AudioEnvironment& environment);

/// The kernel's short name of a process; none if there is no such process. Any thread; does not wait.
std::optional<std::string> executableName(const ProcessInformation& processes, std::int32_t pid);

} // namespace sonvel
