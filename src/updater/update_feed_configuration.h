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

/// The channel of that name, written exactly so; none for anything else.
std::optional<UpdateChannel> updateChannel(std::string_view rawValue) noexcept;

/// What a build on `channel` may be offered besides the items that name no channel.
std::set<std::string> sparkleAllowedChannels(UpdateChannel channel);

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

/// Where a build's updates come from, which key they are verified against and which channel it follows. Only
/// a complete and checked one exists.
struct UpdateFeedConfiguration {
  /// https, or http to a local host where that was allowed.
  QUrl feedURL;

  /// Base64 of exactly 32 bytes, an Ed25519 public key, without blanks around it.
  std::string publicKey;
  UpdateChannel channel;

  /// Checks the settings as a build carries them. An absent channel is `stable`; an http feed passes only for
  /// the hosts "localhost" and "127.0.0.1" and only with `allowInsecureLocalhost`. Throws
  /// UpdateConfigurationError for the first setting that fails. Any thread; does not wait.
  UpdateFeedConfiguration(const std::optional<std::string>& feedURLText,
                          const std::optional<std::string>& publicKeyText,
                          const std::optional<std::string>& channelText, bool allowInsecureLocalhost);

  /// What `bundle` carries under "SUFeedURL", "SUPublicEDKey", "AppUpdateChannel" and
  /// "AppUpdateAllowInsecureLocalhost". None if the check fails. Any thread; does not wait.
  static std::optional<UpdateFeedConfiguration> fromBundle(const BundleInformation& bundle);

  friend bool operator==(const UpdateFeedConfiguration&, const UpdateFeedConfiguration&) = default;
};

} // namespace sonvel
