#pragma once

#include "audio/audio_environment.h"
#include "platform/application_icons.h"
#include "platform/audio_server.h"
#include "platform/clock.h"
#include "platform/preferences.h"

namespace sonvel {

/// The machine that the program runs on: its sound, who plays it, its time and what it remembers. What the
/// members return lives as long as this object. Main thread; the contracts say what other threads may do.
class ProgramAudio {
 public:
  virtual ~ProgramAudio() = default;

  virtual AudioEnvironment environment() = 0;
  virtual AudioServer& server() = 0;
  virtual const BundleInformation& bundle() const = 0;
  virtual const RunningApplications& applications() const = 0;
  virtual const ApplicationIcons& icons() const = 0;
  virtual Clock& clock() = 0;
  virtual Preferences& preferences() = 0;

  /// Whether programs play to a sound system that this program has no say in.
  virtual bool isForeignSoundServing() const { return false; }
};

} // namespace sonvel
