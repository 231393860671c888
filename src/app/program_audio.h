#pragma once

#include "audio/audio_environment.h"
#include "platform/application_icons.h"
#include "platform/audio_server.h"
#include "platform/clock.h"
#include "platform/preferences.h"

namespace sonvel {

/// The machine that the program runs on: sound, applications, time and stored values. The returned objects
/// live as long as this object. Main thread; the returned interfaces say what other threads may do.
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

  /// Whether applications play through a sound system that this program cannot control.
  virtual bool isForeignSoundServing() const { return false; }
};

} // namespace sonvel
