#pragma once

#include "platform/audio_types.h"

#include <exception>

namespace sonvel {

/// Status of a HardwareError that does not come from the audio system.
inline constexpr OSStatus kNoCallStatus = -1;

/// The engine's only exception: a step of building a channel failed.
class HardwareError final : public std::exception {
 public:
  HardwareError(std::string step, OSStatus status)
      : step_(std::move(step))
      , status_(status)
      , description_(step_ + " failed (OSStatus " + std::to_string(status) + ")") {}

  const std::string& step() const noexcept { return step_; }

  /// The status of the failed call, which is success if it returned no object; or kNoCallStatus.
  OSStatus status() const noexcept { return status_; }

  /// One line for the user.
  const std::string& description() const noexcept { return description_; }

  const char* what() const noexcept override { return description_.c_str(); }

 private:
  std::string step_;
  OSStatus status_;
  std::string description_;
};

} // namespace sonvel
