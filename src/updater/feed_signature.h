#pragma once

#include <QByteArray>
#include <QList>
#include <array>
#include <optional>
#include <string_view>

namespace sonvel::updater {

/// An Ed25519 public key.
class PublicKey {
 public:
  /// None unless `base64` decodes to 32 bytes.
  static std::optional<PublicKey> fromBase64(std::string_view base64);

  /// Any thread; time proportional to the length of `message`.
  bool verifies(const QByteArray& signature, const QByteArray& message) const;

 private:
  PublicKey() = default;

  std::array<unsigned char, 32> bytes_{};
};

/// The texts before and after the base64 signature in a signature line at the end of a feed.
inline constexpr std::string_view kSignatureLineStart = "<!-- sonvel-signature: ";
inline constexpr std::string_view kSignatureLineEnd = " -->";

/// `feed` without its final signature lines, at most four. Any thread.
QByteArray unsignedFeed(const QByteArray& feed);

/// The signed part of `feed`: everything before its final signature lines, at most four. None if none of them
/// is a valid signature by one of `keys`. Any thread.
std::optional<QByteArray> verifiedFeed(const QByteArray& feed, const QList<PublicKey>& keys);

} // namespace sonvel::updater
