#include "app/desktop_audio.h"

#include <sys/resource.h>

namespace sonvel {

namespace {

/// Each tap takes about a dozen descriptors, shared with the sound server; a session's usual limit of 1,024
/// would end at some eighty applications.
void raiseDescriptorLimit() noexcept {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace

DesktopAudio::DesktopAudio()
    : identity_(processes_, entries_)
    , hardware_(identity_)
    , applications_(hardware_, identity_, entries_, clock_) {
  raiseDescriptorLimit();
}

} // namespace sonvel
