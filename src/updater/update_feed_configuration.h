#pragma once

#include "platform/bundle_information.h"

#include <QUrl>
#include <array>
#include <exception>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace sonvel {

/// The release channels that a build can follow.
enum class UpdateChannel { stable, beta };

/// Every channel, in order.
inline constexpr std::array kAllUpdateChannels{UpdateChannel::stable, UpdateChannel::beta};

/// "stable" or "beta".
std::string_view rawValue(UpdateChannel channel) noexcept;

/// The channel with exactly that name; none otherwise.
std::optional<UpdateChannel> updateChannel(std::string_view rawValue) noexcept;

/// The channels offered to a build on `channel`, besides items without a channel.
std::set<std::string> sparkleAllowedChannels(UpdateChannel channel);

/// Why a build has no usable update configuration.
class UpdateConfigurationError final : public std::exception {
 public:
  enum class Case { invalidFeedURL, invalidChannel, missingFeedURL, missingPublicKey, invalidPublicKey };

  /// With the trimmed text that is no usable address.
  static UpdateConfigurationError invalidFeedURL(std::string text);

  /// With the trimmed, lowercased text that names no channel.
  static UpdateConfigurationError invalidChannel(std::string text);
  static UpdateConfigurationError missingFeedURL();
  static UpdateConfigurationError missingPublicKey();
  static UpdateConfigurationError invalidPublicKey();

  Case errorCase() const noexcept { return case_; }

  /// The text of the case; empty for cases without one.
  const std::string& payload() const noexcept { return payload_; }

  /// One sentence for the user, independent of the payload.
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

/// A build's update source, verification key and channel. Exists only if complete and valid.
struct UpdateFeedConfiguration {
  /// https, or http to a local host where allowed.
  QUrl feedURL;

  /// Base64 of a 32-byte Ed25519 public key, without surrounding blanks.
  std::string publicKey;
  UpdateChannel channel;

  /// Validates a build's settings. A missing channel means `stable`; an http feed is valid only for
  /// "localhost" and "127.0.0.1", and only with `allowInsecureLocalhost`. Throws UpdateConfigurationError for
  /// the first invalid setting. Any thread; does not block.
  UpdateFeedConfiguration(const std::optional<std::string>& feedURLText,
                          const std::optional<std::string>& publicKeyText,
                          const std::optional<std::string>& channelText, bool allowInsecureLocalhost);

  /// Reads "SUFeedURL", "SUPublicEDKey", "AppUpdateChannel" and "AppUpdateAllowInsecureLocalhost" from
  /// `bundle`. None if invalid. Any thread; does not block.
  static std::optional<UpdateFeedConfiguration> fromBundle(const BundleInformation& bundle);

  friend bool operator==(const UpdateFeedConfiguration&, const UpdateFeedConfiguration&) = default;
};

} // namespace sonvel
