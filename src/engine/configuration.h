#pragma once

#include "platform/audio_hardware.h"

namespace sonvel {

/// While it exists what is heard stays as it was; then everything that was changed takes effect together.
/// Where scopes are nested the outermost one counts. A configuration that can't be begun or committed only
/// lets changes be heard one by one. Blocks as the audio system does.
class ConfigurationScope {
 public:
  /// `depth` counts the scopes that exist on `hardware`. Both outlive the scope.
  ConfigurationScope(AudioHardware& hardware, int& depth)
      : hardware_(hardware)
      , depth_(depth) {
    if (depth_++ == 0) hardware_.beginConfiguration();
  }

  ~ConfigurationScope() {
    if (--depth_ == 0) hardware_.commitConfiguration();
  }

  ConfigurationScope(const ConfigurationScope&) = delete;
  ConfigurationScope& operator=(const ConfigurationScope&) = delete;

 private:
  AudioHardware& hardware_;
  int& depth_;
};

} // namespace sonvel
