#pragma once

#include "platform/audio_hardware.h"

namespace sonvel {

/// Groups changes: while a scope exists what is heard does not change; when the outermost scope ends all
/// changes take effect together. If a configuration can't be begun or committed, the changes take effect one
/// by one. Blocks as the audio system does.
class ConfigurationScope {
 public:
  /// `depth` counts the open scopes on `hardware`. Both outlive the scope.
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
