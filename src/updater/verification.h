#pragma once

#include "platform/update_session.h"

#include <QByteArray>
#include <array>
#include <filesystem>
#include <optional>
#include <string_view>
#include <variant>

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

/// What a file must be.
struct Expectation {
  qint64 length;
  QByteArray signature;
};

/// The content of a file that was what it must be. Nothing else is ever installed, and there is no way to
/// one but verifyFile.
class VerifiedUpdate {
 public:
  const QByteArray& bytes() const noexcept { return bytes_; }

 private:
  friend std::variant<VerifiedUpdate, UpdateFailure> verifyFile(const std::filesystem::path&,
                                                                const Expectation&, const PublicKey&);

  explicit VerifiedUpdate(QByteArray bytes)
      : bytes_(std::move(bytes)) {}

  QByteArray bytes_;
};

/// Reads the whole file into memory once and checks its length and its signature there, so that what was
/// checked is what the caller gets, whatever happens to the file. Fails with wrongLength or wrongSignature.
/// Any thread; blocks.
std::variant<VerifiedUpdate, UpdateFailure> verifyFile(const std::filesystem::path& file,
                                                       const Expectation& expectation, const PublicKey& key);

} // namespace sonvel::updater
