#pragma once

#include "updater/feed_signature.h"

#include <QByteArray>
#include <array>
#include <cstdlib>
#include <optional>
#include <sodium.h>
#include <string>

namespace sonvel::signing {

/// An Ed25519 secret key with its public one. It is wiped from memory at its end. Any thread.
class SecretKey {
 public:
  /// A new one.
  SecretKey() {
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> publicKey{};
    if (sodium_init() < 0) std::abort();
    crypto_sign_keypair(publicKey.data(), bytes_.data());
  }

  ~SecretKey() { sodium_memzero(bytes_.data(), bytes_.size()); }

  SecretKey(const SecretKey&) = default;
  SecretKey& operator=(const SecretKey&) = default;

  /// From what base64() gave; none if it isn't that.
  static std::optional<SecretKey> fromBase64(const QByteArray& text) {
    const auto decoded =
        QByteArray::fromBase64Encoding(text.trimmed(), QByteArray::AbortOnBase64DecodingErrors);
    SecretKey key;
    if (!decoded || decoded.decoded.size() != static_cast<qsizetype>(key.bytes_.size())) return std::nullopt;
    std::copy(decoded.decoded.begin(), decoded.decoded.end(), key.bytes_.begin());
    return key;
  }

  QByteArray base64() const { return data(bytes_).toBase64(); }

  /// As the configuration of a build has it.
  std::string publicKey() const {
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> key{};
    crypto_sign_ed25519_sk_to_pk(key.data(), bytes_.data());
    return data(key).toBase64().toStdString();
  }

  QByteArray sign(const QByteArray& message) const {
    std::array<unsigned char, crypto_sign_BYTES> signature{};
    crypto_sign_detached(signature.data(), nullptr,
                         reinterpret_cast<const unsigned char*>(message.constData()),
                         static_cast<unsigned long long>(message.size()), bytes_.data());
    return data(signature);
  }

 private:
  template <std::size_t size> static QByteArray data(const std::array<unsigned char, size>& bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(size));
  }

  std::array<unsigned char, crypto_sign_SECRETKEYBYTES> bytes_{};
};

/// `feed` with a signature line by each of `keys` at its end.
inline QByteArray signedFeed(QByteArray feed, const QList<SecretKey>& keys) {
  if (!feed.endsWith('\n')) feed.append('\n');
  QByteArray lines;
  for (const SecretKey& key : keys)
    lines += QByteArray::fromStdString(std::string(updater::kSignatureLineStart)) +
             key.sign(feed).toBase64() + QByteArray::fromStdString(std::string(updater::kSignatureLineEnd)) +
             '\n';
  return feed + lines;
}

/// The SHA-256 of a file's content, in hexadecimal digits.
inline QByteArray hashText(const QByteArray& content) {
  QByteArray hash(crypto_hash_sha256_BYTES, '\0');
  crypto_hash_sha256(reinterpret_cast<unsigned char*>(hash.data()),
                     reinterpret_cast<const unsigned char*>(content.constData()),
                     static_cast<unsigned long long>(content.size()));
  return hash.toHex();
}

} // namespace sonvel::signing
