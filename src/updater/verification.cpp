#include "updater/verification.h"

#include "updater/file_descriptor.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>

namespace sonvel::updater {
namespace {

static_assert(crypto_sign_PUBLICKEYBYTES == 32);

/// A pipe or a device in the file's place must not be waited for.
FileDescriptor openRegularFile(const std::filesystem::path& file, qint64 length) {
  FileDescriptor opened(::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));

  struct stat status {};

  if (!opened.isOpen() || ::fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
      status.st_size != length)
    return FileDescriptor(-1);
  return opened;
}

/// Exactly `length` bytes; none if there are fewer.
std::optional<QByteArray> readBytes(int descriptor, qint64 length) {
  QByteArray bytes(length, Qt::Uninitialized);
  qint64 read = 0;
  while (read < length) {
    const ssize_t count = ::read(descriptor, bytes.data() + read, static_cast<std::size_t>(length - read));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return std::nullopt;
    read += count;
  }
  return bytes;
}

const unsigned char* unsignedData(const QByteArray& bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.constData());
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

std::variant<VerifiedUpdate, UpdateFailure> verifyFile(const std::filesystem::path& file,
                                                       const Expectation& expectation, const PublicKey& key) {
  const FileDescriptor opened = openRegularFile(file, expectation.length);
  if (!opened.isOpen()) return UpdateFailure::wrongLength;
  auto bytes = readBytes(opened.get(), expectation.length);
  if (!bytes) return UpdateFailure::wrongLength;
  if (!key.verifies(expectation.signature, *bytes)) return UpdateFailure::wrongSignature;
  return VerifiedUpdate(std::move(*bytes));
}

} // namespace sonvel::updater
