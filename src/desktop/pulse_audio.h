#pragma once

namespace sonvel::desktop {

/// Whether PulseAudio's own daemon serves this session's programs, and not PipeWire in its place. Any thread;
/// reads two small files.
bool isPulseAudioServing();

} // namespace sonvel::desktop
