#pragma once

#include <exception>
#include <string>

namespace sonvel {

/// Why a build has no usable update configuration.
class UpdateConfigurationError final : public std::exception {
 public:
  enum class Case { invalidFeedURL, invalidChannel, missingFeedURL, missingPublicKey, invalidPublicKey };

  /// The trimmed text that is no usable address.
  static UpdateConfigurationError invalidFeedURL(std::string text);

  /// The trimmed, lowercased text that names no channel.
  static UpdateConfigurationError invalidChannel(std::string text);
  static UpdateConfigurationError missingFeedURL();
  static UpdateConfigurationError missingPublicKey();
  static UpdateConfigurationError invalidPublicKey();

  Case errorCase() const noexcept { return case_; }

  /// The text that the case carries; empty for those that carry none.
  const std::string& payload() const noexcept { return payload_; }

  /// One sentence for a person, the same for every payload.
  std::string errorDescription() const { return what(); }

  const char* what() const noexcept override;

  friend bool operator==(const UpdateConfigurationError& left,
                         const UpdateConfigurationError& right) noexcept {
    return left.case_ == right.case_ && left.payload_ == right.payload_;
  }

 private:
  explicit UpdateConfigurationError(Case errorCase, std::string payload = {})
      : case_(errorCase)
      , payload_(std::move(payload)) {}

  Case case_;
  std::string payload_;
};

} // namespace sonvel
