#pragma once

#include "platform/audio_types.h"

namespace sonvel {

/// The result of one attempt to remove a session.
struct HardwareTeardownResult {
  AudioObjectID appID = kAudioObjectUnknown; ///< the process object of the session's application
  std::vector<std::string> failures;         ///< one line each; empty if the session was removed completely

  bool restored() const noexcept { return failures.empty(); }

  /// All failures in one line.
  std::string failureText() const {
    std::string text;
    for (const auto& failure : failures) {
      if (!text.empty()) text += "; ";
      text += failure;
    }
    return text;
  }

  bool operator==(const HardwareTeardownResult&) const = default;
};

} // namespace sonvel
