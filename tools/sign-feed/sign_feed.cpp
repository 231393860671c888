
#include "signing.h"
#include "updater/appcast.h"
#include "updater/update_file.h"

#include <QFile>
#include <QSaveFile>
#include <QString>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>

namespace {

using sonvel::signing::SecretKey;

constexpr const char* kUsage = "sign-feed new-key KEYFILE          make a secret key, print its public key\n"
                               "sign-feed public-key KEYFILE       print the public key again\n"
                               "sign-feed describe FILE            print what a feed says about a file\n"
                               "sign-feed sign FEED KEYFILE...     sign a feed, replacing older signatures\n";

[[noreturn]] void fail(const QString& what, const QString& why) {
  throw std::runtime_error((what + QStringLiteral(": ") + why).toStdString());
}

QByteArray contentOf(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) fail(path, file.errorString());
  return file.readAll();
}

SecretKey keyFrom(const QString& path) {
  const auto key = SecretKey::fromBase64(contentOf(path));
  if (!key) fail(path, QStringLiteral("is not a secret key"));
  return *key;
}

/// Writes a file readable only by its owner; never replaces a file.
void makeKey(const QString& path) {
  const SecretKey key;
  const sonvel::updater::FileDescriptor output(
      ::open(qPrintable(path), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  const QByteArray line = key.base64() + '\n';
  if (!output.isOpen() ||
      !sonvel::updater::writeAll(output.get(), {line.constData(), static_cast<std::size_t>(line.size())}))
    fail(path, QString::fromLocal8Bit(std::strerror(errno)));
  std::printf("%s\n", key.publicKey().c_str());
}

void describe(const QString& path) {
  const QByteArray content = contentOf(path);
  std::printf("length=\"%lld\" sonvel:sha256=\"%s\"\n", static_cast<long long>(content.size()),
              sonvel::signing::hashText(content).constData());
}

/// Rejects what the program would not accept.
void checkFeed(const QString& path, const QByteArray& feed) {
  const auto appcast = sonvel::updater::readAppcast(feed);
  if (!appcast) fail(path, QStringLiteral("can't be read, or lacks product, counter or expiry"));
  if (appcast->expires <= QDateTime::currentDateTimeUtc()) fail(path, QStringLiteral("has expired"));
  for (const auto& item : appcast->items)
    if (sonvel::updater::faultOf(item, sonvel::updater::AddressPolicy::httpsOrLocalhost))
      fail(path, QStringLiteral("has an incomplete item, version ") + item.version);
}

void sign(const QString& path, const QStringList& keyFiles) {
  QList<SecretKey> keys;
  for (const QString& file : keyFiles)
    keys.append(keyFrom(file));
  const QByteArray feed = sonvel::updater::unsignedFeed(contentOf(path));
  checkFeed(path, feed);
  QSaveFile output(path);
  if (!output.open(QIODevice::WriteOnly) || output.write(sonvel::signing::signedFeed(feed, keys)) < 0 ||
      !output.commit())
    fail(path, output.errorString());
}

bool run(const QStringList& arguments) {
  const QString command = arguments.value(0);
  if (command == QLatin1String("new-key") && arguments.size() == 2)
    makeKey(arguments[1]);
  else if (command == QLatin1String("public-key") && arguments.size() == 2)
    std::printf("%s\n", keyFrom(arguments[1]).publicKey().c_str());
  else if (command == QLatin1String("describe") && arguments.size() == 2)
    describe(arguments[1]);
  else if (command == QLatin1String("sign") && arguments.size() >= 3)
    sign(arguments[1], arguments.mid(2));
  else
    return false;
  return true;
}

} // namespace

int main(int argumentCount, char** arguments) {
  QStringList words;
  for (int i = 1; i < argumentCount; ++i)
    words.append(QString::fromLocal8Bit(arguments[i]));
  try {
    if (run(words)) return EXIT_SUCCESS;
    std::fputs(kUsage, stderr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "sign-feed: %s\n", error.what());
  }
  return EXIT_FAILURE;
}
