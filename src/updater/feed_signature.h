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
  /// None if `base64` isn't 32 bytes.
  static std::optional<PublicKey> fromBase64(std::string_view base64);

  /// Any thread; takes time in proportion to `message`.
  bool verifies(const QByteArray& signature, const QByteArray& message) const;

 private:
  PublicKey() = default;

  std::array<unsigned char, 32> bytes_{};
};

/// What comes before and after the base64 of a signature in a line at the end of a feed.
inline constexpr std::string_view kSignatureLineStart = "<!-- sonvel-signature: ";
inline constexpr std::string_view kSignatureLineEnd = " -->";

/// `feed` without the signature lines at its end, of which there are up to four. Any thread.
QByteArray unsignedFeed(const QByteArray& feed);

/// The part of `feed` that is signed: all before the signature lines at its end, of which there are up to
/// four. None if none of them is a signature of that part by one of `keys`. Any thread.
std::optional<QByteArray> verifiedFeed(const QByteArray& feed, const QList<PublicKey>& keys);

} // namespace sonvel::updater
