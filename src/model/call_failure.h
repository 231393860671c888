#pragma once

#include "platform/audio_types.h"

#include <optional>
#include <string>

namespace sonvel {

/// Why a call of the controller failed.
struct CallFailure {
  std::string text;                    ///< one line
  std::optional<OSStatus> status = {}; ///< what the audio system returned; none if it was not asked

  bool operator==(const CallFailure&) const = default;
};

} // namespace sonvel
