#pragma once

namespace sonvel::desktop {

/// Whether the PulseAudio daemon, rather than PipeWire's replacement, serves this session. Any thread; reads
/// two small files.
bool isPulseAudioServing();

} // namespace sonvel::desktop
