#include "updater/update_configuration_error.h"

#include <utility>

namespace sonvel {

UpdateConfigurationError UpdateConfigurationError::invalidFeedURL(std::string text) {
  return UpdateConfigurationError(Case::invalidFeedURL, std::move(text));
}

UpdateConfigurationError UpdateConfigurationError::invalidChannel(std::string text) {
  return UpdateConfigurationError(Case::invalidChannel, std::move(text));
}

UpdateConfigurationError UpdateConfigurationError::missingFeedURL() {
  return UpdateConfigurationError(Case::missingFeedURL);
}

UpdateConfigurationError UpdateConfigurationError::missingPublicKey() {
  return UpdateConfigurationError(Case::missingPublicKey);
}

UpdateConfigurationError UpdateConfigurationError::invalidPublicKey() {
  return UpdateConfigurationError(Case::invalidPublicKey);
}

const char* UpdateConfigurationError::what() const noexcept {
  switch (case_) {
  case Case::invalidFeedURL:
    return "The update feed URL must use HTTPS (or explicit localhost development mode).";
  case Case::invalidChannel:
    return "The update channel must be stable or beta.";
  case Case::missingFeedURL:
    return "No update feed is configured for this build.";
  case Case::missingPublicKey:
    return "No Sparkle update signing public key is configured for this build.";
  case Case::invalidPublicKey:
    break;
  }
  return "The Sparkle update signing public key is invalid.";
}

} // namespace sonvel
