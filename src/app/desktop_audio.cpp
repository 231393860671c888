#include "app/desktop_audio.h"

#include <sys/resource.h>
#include <unistd.h>

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

desktop::OwnProgram ownProgram(const BundleInformation& bundle, const desktop::ProcessTree& processes) {
  const auto facts = processes.process(getpid());
  return {bundle.bundleIdentifier().value_or(""), facts ? facts->executable : std::nullopt};
}

} // namespace

DesktopAudio::DesktopAudio()
    : identity_(processes_, entries_, ownProgram(bundle_, processes_))
    , hardware_(identity_)
    , applications_(hardware_, identity_, entries_, clock_)
    , icons_(entries_) {
  raiseDescriptorLimit();
}

} // namespace sonvel
