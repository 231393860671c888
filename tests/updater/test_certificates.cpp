#include "updater/test_certificates.h"

#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>

namespace sonvel::updater {
namespace {

QByteArray contentOf(const QString& path) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
  return file.readAll();
}

} // namespace

TestCertificates::TestCertificates()
    : trusted_(make(QStringLiteral("trusted"), QStringLiteral("DNS:localhost,IP:127.0.0.1")))
    , untrusted_(make(QStringLiteral("untrusted"), QStringLiteral("DNS:localhost,IP:127.0.0.1")))
    , otherHost_(make(QStringLiteral("other"), QStringLiteral("DNS:updates.example"))) {
  QSslConfiguration client = QSslConfiguration::defaultConfiguration();
  client.addCaCertificates({trusted_.localCertificate(), otherHost_.localCertificate()});
  QSslConfiguration::setDefaultConfiguration(client);
}

QSslConfiguration TestCertificates::make(const QString& name, const QString& alternativeNames) const {
  const QString base = QString::fromStdString(folder_.path(name.toStdString()));
  const QString key = base + QStringLiteral(".key");
  const QString certificate = base + QStringLiteral(".pem");
  QProcess openssl;
  openssl.start(
      QStringLiteral("openssl"),
      {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"), QStringLiteral("ec"),
       QStringLiteral("-pkeyopt"), QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes"),
       QStringLiteral("-days"), QStringLiteral("2"), QStringLiteral("-subj"), QStringLiteral("/CN=") + name,
       QStringLiteral("-addext"), QStringLiteral("subjectAltName=") + alternativeNames,
       QStringLiteral("-keyout"), key, QStringLiteral("-out"), certificate});
  EXPECT_TRUE(openssl.waitForFinished()) << openssl.errorString().toStdString();
  EXPECT_EQ(openssl.exitCode(), 0) << openssl.readAllStandardError().toStdString();

  QSslConfiguration server = QSslConfiguration::defaultConfiguration();
  server.setLocalCertificate(QSslCertificate(contentOf(certificate)));
  server.setPrivateKey(QSslKey(contentOf(key), QSsl::Ec));
  return server;
}

const TestCertificates& testCertificates() {
  static const TestCertificates certificates;
  return certificates;
}

} // namespace sonvel::updater
