#include "updater/update_file.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sodium.h>
#include <string>
#include <string_view>
#include <sys/mman.h>

namespace sonvel::updater {
namespace {

constexpr int kAllSeals = F_SEAL_WRITE | F_SEAL_GROW | F_SEAL_SHRINK | F_SEAL_SEAL;

bool hasHash(std::span<const char> bytes, const QByteArray& hash) {
  std::array<unsigned char, crypto_hash_sha256_BYTES> actual{};
  crypto_hash_sha256(actual.data(), reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  return QByteArrayView(actual) == hash;
}

} // namespace

bool writeAll(int descriptor, std::span<const char> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return true;
}

UpdateFailure failureOfWriting(int error, UpdateFailure otherwise) {
  return error == ENOSPC || error == EDQUOT || error == EFBIG || error == ENOMEM ? UpdateFailure::noSpace
                                                                                 : otherwise;
}

VerifiedUpdate::~VerifiedUpdate() {
  ::munmap(const_cast<char*>(bytes_.data()), bytes_.size());
}

bool VerifiedUpdate::startsWith(std::string_view bytes) const noexcept {
  return std::string_view(bytes_.data(), bytes_.size()).starts_with(bytes);
}

std::filesystem::path VerifiedUpdate::path() const {
  return "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(file_.get());
}

UpdateFile::UpdateFile()
    : file_(::memfd_create("sonvel-update", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {}

std::optional<UpdateFailure> UpdateFile::append(const QByteArray& bytes) {
  if (!file_.isOpen() || !writeAll(file_.get(), {bytes.constData(), static_cast<std::size_t>(bytes.size())}))
    return UpdateFailure::noSpace;
  size_ += bytes.size();
  return std::nullopt;
}

std::shared_ptr<const VerifiedUpdate> UpdateFile::verify(const QByteArray& hash) && {
  const auto length = static_cast<std::size_t>(size_);
  if (length == 0 || ::fcntl(file_.get(), F_ADD_SEALS, kAllSeals) != 0) return nullptr;
  void* mapped = ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE, file_.get(), 0);
  if (mapped == MAP_FAILED) return nullptr;
  const std::span<const char> bytes(static_cast<const char*>(mapped), length);
  std::shared_ptr<const VerifiedUpdate> update(new VerifiedUpdate(std::move(file_), bytes));
  return hasHash(bytes, hash) ? update : nullptr;
}

} // namespace sonvel::updater
