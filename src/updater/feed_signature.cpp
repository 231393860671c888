#include "updater/feed_signature.h"

#include <algorithm>
#include <sodium.h>

namespace sonvel::updater {
namespace {

static_assert(crypto_sign_PUBLICKEYBYTES == 32);

constexpr int kMaximumSignatures = 4;

const unsigned char* unsignedData(const QByteArray& bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.constData());
}

/// Removes the last line of `feed` if it is a signature line, and returns its signature.
std::optional<QByteArray> takeSignature(QByteArray& feed) {
  const qsizetype end = feed.endsWith('\n') ? feed.size() - 1 : feed.size();
  const qsizetype start = end > 0 ? feed.lastIndexOf('\n', end - 1) + 1 : 0;
  const std::string_view line(feed.constData() + start, static_cast<std::size_t>(end - start));
  if (!line.starts_with(kSignatureLineStart) || !line.ends_with(kSignatureLineEnd)) return std::nullopt;
  std::string_view base64 = line.substr(kSignatureLineStart.size());
  base64.remove_suffix(std::min(base64.size(), kSignatureLineEnd.size()));
  const auto decoded =
      QByteArray::fromBase64Encoding(QByteArray(base64.data(), static_cast<qsizetype>(base64.size())),
                                     QByteArray::AbortOnBase64DecodingErrors);
  feed.truncate(start);
  return decoded ? decoded.decoded : QByteArray();
}

struct SplitFeed {
  QByteArray message;
  QList<QByteArray> signatures;
};

SplitFeed split(const QByteArray& feed) {
  SplitFeed parts{.message = feed, .signatures = {}};
  while (parts.signatures.size() < kMaximumSignatures) {
    const auto signature = takeSignature(parts.message);
    if (!signature) break;
    parts.signatures.append(*signature);
  }
  return parts;
}

} // namespace

std::optional<PublicKey> PublicKey::fromBase64(std::string_view base64) {
  const auto decoded =
      QByteArray::fromBase64Encoding(QByteArray(base64.data(), static_cast<qsizetype>(base64.size())),
                                     QByteArray::AbortOnBase64DecodingErrors);
  PublicKey key;
  if (!decoded || decoded.decoded.size() != static_cast<qsizetype>(key.bytes_.size())) return std::nullopt;
  std::copy_n(unsignedData(decoded.decoded), key.bytes_.size(), key.bytes_.begin());
  return key;
}

bool PublicKey::verifies(const QByteArray& signature, const QByteArray& message) const {
  if (signature.size() != crypto_sign_BYTES || sodium_init() < 0) return false;
  return crypto_sign_verify_detached(unsignedData(signature), unsignedData(message),
                                     static_cast<unsigned long long>(message.size()), bytes_.data()) == 0;
}

QByteArray unsignedFeed(const QByteArray& feed) {
  return split(feed).message;
}

std::optional<QByteArray> verifiedFeed(const QByteArray& feed, const QList<PublicKey>& keys) {
  const SplitFeed parts = split(feed);
  for (const QByteArray& signature : parts.signatures)
    for (const PublicKey& key : keys)
      if (key.verifies(signature, parts.message)) return parts.message;
  return std::nullopt;
}

} // namespace sonvel::updater
