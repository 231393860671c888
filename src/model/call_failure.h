#pragma once

#include "platform/audio_types.h"

#include <optional>
#include <string>

namespace sonvel {

/// Why a call of the controller failed.
struct CallFailure {
  std::string text;                    ///< one line
  std::optional<OSStatus> status = {}; ///< status of the audio system; none if it was not called

  bool operator==(const CallFailure&) const = default;
};

} // namespace sonvel
