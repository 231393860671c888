#include "updater/update_feed_configuration.h"

#include <QByteArray>
#include <QString>
#include <string_view>
#include <utility>

namespace sonvel {
namespace {

constexpr qsizetype kPublicKeyBytes = 32;

std::string trimmed(const std::optional<std::string>& text) {
  return QString::fromStdString(text.value_or(std::string())).trimmed().toStdString();
}

/// Scheme and host as written; QUrl would lowercase both.
struct WrittenAddress {
  std::string_view scheme;
  std::string_view host;
};

std::optional<WrittenAddress> writtenAddress(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos || text.substr(colon + 1, 2) != "//") return std::nullopt;
  if (text.find('#') != text.rfind('#')) return std::nullopt; // QUrl would accept a second one
  const std::string_view rest = text.substr(colon + 3);
  std::string_view host = rest.substr(0, rest.find_first_of("/?#"));
  if (const std::size_t user = host.rfind('@'); user != std::string_view::npos) host.remove_prefix(user + 1);
  if (const std::size_t end = host.rfind(':'); end != std::string_view::npos && !host.ends_with(']'))
    host = host.substr(0, end);
  if (host.empty()) return std::nullopt;
  return WrittenAddress{text.substr(0, colon), host};
}

bool isSecure(const WrittenAddress& address, bool allowInsecureLocalhost) {
  if (address.scheme == "https") return true;
  return allowInsecureLocalhost && address.scheme == "http" &&
         (address.host == "localhost" || address.host == "127.0.0.1");
}

QUrl checkedFeedURL(const std::optional<std::string>& feedURLText, bool allowInsecureLocalhost) {
  const std::string text = trimmed(feedURLText);
  if (text.empty()) throw UpdateConfigurationError::missingFeedURL();
  QUrl url(QString::fromStdString(text), QUrl::StrictMode);
  const std::optional<WrittenAddress> address = writtenAddress(text);
  if (!url.isValid() || url.host().isEmpty() || !address || !isSecure(*address, allowInsecureLocalhost))
    throw UpdateConfigurationError::invalidFeedURL(text);
  return url;
}

std::string checkedPublicKey(const std::optional<std::string>& publicKeyText) {
  std::string text = trimmed(publicKeyText);
  if (text.empty()) throw UpdateConfigurationError::missingPublicKey();
  // The decoder would accept missing padding.
  const auto key = QByteArray::fromBase64Encoding(QByteArray::fromStdString(text),
                                                  QByteArray::AbortOnBase64DecodingErrors);
  if (text.size() % 4 != 0 || !key || key.decoded.size() != kPublicKeyBytes)
    throw UpdateConfigurationError::invalidPublicKey();
  return text;
}

UpdateChannel checkedChannel(const std::optional<std::string>& channelText) {
  if (!channelText) return UpdateChannel::stable;
  const std::string text = QString::fromStdString(*channelText).trimmed().toLower().toStdString();
  const std::optional<UpdateChannel> channel = updateChannel(text);
  if (!channel) throw UpdateConfigurationError::invalidChannel(text);
  return *channel;
}

template <typename Value>
std::optional<Value> infoValue(const BundleInformation& bundle, std::string_view key) {
  const std::optional<BundleInformation::InfoObject> object = bundle.objectForInfoKey(key);
  const Value* value = object ? std::get_if<Value>(&*object) : nullptr;
  return value ? std::optional<Value>(*value) : std::nullopt;
}

} // namespace

std::string_view rawValue(UpdateChannel channel) noexcept {
  return channel == UpdateChannel::beta ? "beta" : "stable";
}

std::optional<UpdateChannel> updateChannel(std::string_view text) noexcept {
  for (const UpdateChannel channel : kAllUpdateChannels)
    if (rawValue(channel) == text) return channel;
  return std::nullopt;
}

std::set<std::string> sparkleAllowedChannels(UpdateChannel channel) {
  if (channel == UpdateChannel::stable) return {};
  return {std::string(rawValue(channel))};
}

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

UpdateFeedConfiguration::UpdateFeedConfiguration(const std::optional<std::string>& feedURLText,
                                                 const std::optional<std::string>& publicKeyText,
                                                 const std::optional<std::string>& channelText,
                                                 bool allowInsecureLocalhost)
    : feedURL(checkedFeedURL(feedURLText, allowInsecureLocalhost))
    , publicKey(checkedPublicKey(publicKeyText))
    , channel(checkedChannel(channelText)) {}

std::optional<UpdateFeedConfiguration> UpdateFeedConfiguration::fromBundle(const BundleInformation& bundle) {
  try {
    return UpdateFeedConfiguration(
        infoValue<std::string>(bundle, "SUFeedURL"), infoValue<std::string>(bundle, "SUPublicEDKey"),
        infoValue<std::string>(bundle, "AppUpdateChannel"),
        infoValue<bool>(bundle, "AppUpdateAllowInsecureLocalhost").value_or(false));
  } catch (const UpdateConfigurationError&) {
    return std::nullopt;
  }
}

} // namespace sonvel
