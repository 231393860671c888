#include "app/desktop_audio.h"

#include <unistd.h>

namespace sonvel {

namespace {

desktop::OwnProgram ownProgram(const BundleInformation& bundle, const desktop::ProcessTree& processes) {
  const auto facts = processes.process(getpid());
  return {bundle.bundleIdentifier().value_or(""), facts ? facts->executable : std::nullopt};
}

} // namespace

DesktopAudio::DesktopAudio()
    : askedIdentity_(processes_, entries_, ownProgram(bundle_, processes_))
    , identity_(askedIdentity_, clock_)
    , hardware_(identity_)
    , applications_(hardware_, identity_, entries_, clock_)
    , icons_(entries_) {}

} // namespace sonvel
