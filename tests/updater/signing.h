#pragma once

#include <QByteArray>
#include <sodium.h>
#include <string>

namespace sonvel::updater {

/// A pair of keys that exists in this process alone.
class SigningKey {
 public:
  SigningKey() {
    public_.resize(crypto_sign_PUBLICKEYBYTES);
    secret_.resize(crypto_sign_SECRETKEYBYTES);
    if (sodium_init() < 0) std::abort();
    crypto_sign_keypair(data(public_), data(secret_));
  }

  std::string publicKey() const { return public_.toBase64().toStdString(); }

  QByteArray sign(const QByteArray& message) const {
    QByteArray signature(crypto_sign_BYTES, '\0');
    crypto_sign_detached(data(signature), nullptr, data(message),
                         static_cast<unsigned long long>(message.size()), data(secret_));
    return signature;
  }

 private:
  static unsigned char* data(QByteArray& bytes) { return reinterpret_cast<unsigned char*>(bytes.data()); }

  static const unsigned char* data(const QByteArray& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.constData());
  }

  QByteArray public_;
  QByteArray secret_;
};

} // namespace sonvel::updater
