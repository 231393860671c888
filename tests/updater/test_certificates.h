#pragma once

#include "desktop/temporary_folder.h"

#include <QSslConfiguration>

namespace sonvel::updater {

/// Certificates made for this run of the tests, with keys that exist nowhere else.
class TestCertificates {
 public:
  TestCertificates();

  /// For the hosts localhost and 127.0.0.1. Trusted in this process.
  const QSslConfiguration& trusted() const { return trusted_; }

  /// For localhost too, but nobody trusts it.
  const QSslConfiguration& untrusted() const { return untrusted_; }

  /// Trusted, but for another host.
  const QSslConfiguration& otherHost() const { return otherHost_; }

 private:
  QSslConfiguration make(const QString& name, const QString& alternativeNames) const;

  desktop::TemporaryFolder folder_;
  QSslConfiguration trusted_;
  QSslConfiguration untrusted_;
  QSslConfiguration otherHost_;
};

/// The one set of this process.
const TestCertificates& testCertificates();

} // namespace sonvel::updater
