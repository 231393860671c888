#include "updater/updater_world.h"

#include <gtest/gtest.h>

#include <QDirIterator>

namespace sonvel::updater {

UpdaterWorld::UpdaterWorld(const std::optional<QSslConfiguration>& security, Installation::Kind kind)
    : places_{folder.path()}
    , kind_(kind)
    , server_(security) {
  folder.writeProgram("bin/program", oldFile.toStdString());
  serveGood();
  cycle_ = std::make_unique<UpdateCycle>(environment(), feedURL(), PublicKey::fromBase64(key.publicKey()),
                                         [this] { return allowedChannels; });
}

UpdaterEnvironment UpdaterWorld::environment() {
  return {.clock = clock,
          .preferences = preferences,
          .packageInstaller = packages,
          .relaunch = relaunch,
          .requestQuit = [this] { ++quitRequests; },
          .calendarTime = [] { return std::chrono::system_clock::time_point(); },
          .installation = {kind_, places_.program()},
          .installedVersion = QStringLiteral("1.0"),
          .systemVersion = systemVersion,
          .downloadFolder = QString::fromStdString(places_.downloads().string())};
}

FeedItem UpdaterWorld::goodItem() const {
  return {.address = server_.url(QStringLiteral("/update")).toString(),
          .length = newFile.size(),
          .signature = key.sign(newFile)};
}

QByteArray UpdaterWorld::feedOf(const QList<FeedItem>& items) {
  QString feed = QStringLiteral("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                                "<rss version=\"2.0\" xmlns:sparkle=\"urn:appcast\"><channel>");
  for (const FeedItem& item : items)
    feed += QStringLiteral("<item><sparkle:version>%1</sparkle:version>"
                           "<sparkle:channel>%2</sparkle:channel>"
                           "<sparkle:minimumSystemVersion>%3</sparkle:minimumSystemVersion>"
                           "<description><![CDATA[<p>What is new:</p><ul><li>more</li></ul>]]></description>"
                           "<enclosure url=\"%4\" length=\"%5\" sparkle:edSignature=\"%6\"/></item>")
                .arg(item.version, item.channel, item.minimumSystemVersion, item.address)
                .arg(item.length)
                .arg(QString::fromLatin1(item.signature.toBase64()));
  return feed.toUtf8() + "</channel></rss>";
}

void UpdaterWorld::serveGood() {
  serveFeed(feedOf({goodItem()}));
  serveFile(newFile);
}

void UpdaterWorld::advanceTo(UpdateStage target) {
  cycle_->check(UpdateCycle::Asker::user);
  if (target == UpdateStage::checking) return;
  ASSERT_TRUE(waitFor(UpdateStage::available));
  if (target == UpdateStage::available) return;
  cycle_->proceed();
  ASSERT_EQ(stage(), UpdateStage::downloading);
  if (target == UpdateStage::downloading) return;
  ASSERT_TRUE(waitFor(target == UpdateStage::verifying ? target : UpdateStage::ready));
  if (target == UpdateStage::verifying || target == UpdateStage::ready) return;
  cycle_->proceed();
  ASSERT_EQ(stage(), UpdateStage::installing);
}

QStringList UpdaterWorld::programFolder() const {
  return QDir(QString::fromStdString(places_.program().parent_path().string()))
      .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

QStringList UpdaterWorld::downloads() const {
  QStringList found;
  QDirIterator all(QString::fromStdString(places_.downloads().string()),
                   QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
  while (all.hasNext())
    found.append(all.next());
  return found;
}

QByteArray UpdaterWorld::contentOf(const std::filesystem::path& file) {
  QFile opened(file);
  EXPECT_TRUE(opened.open(QIODevice::ReadOnly)) << file;
  return opened.readAll();
}

} // namespace sonvel::updater
