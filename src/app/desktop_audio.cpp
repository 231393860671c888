#include "app/desktop_audio.h"

namespace sonvel {

DesktopAudio::DesktopAudio()
    : identity_(processes_, entries_)
    , hardware_(identity_)
    , applications_(hardware_, identity_, entries_, clock_) {}

} // namespace sonvel
