#pragma once

#include "session/player.h"

#include <filesystem>

namespace sonvel::session {

/// A WAV file (48 kHz, stereo, 32-bit float) of the given length with this tone, in this folder; made once.
/// Throws std::runtime_error when it can't be written.
[[nodiscard]] std::filesystem::path toneFile(const std::filesystem::path& folder, Tone tone, int seconds);

} // namespace sonvel::session
