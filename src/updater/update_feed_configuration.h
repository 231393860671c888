#pragma once

#include "platform/bundle_information.h"
#include "updater/update_channel.h"
#include "updater/update_configuration_error.h"

#include <QUrl>
#include <optional>
#include <string>

namespace sonvel {

/// Where a build's updates come from, what they are verified against and which channel it follows. Exists
/// only complete and checked.
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
