#include "updater/updater_world.h"

namespace sonvel::updater {

QByteArray Feed::xml() const {
  QByteArray feed = "<rss><channel><sonvel:product>" + product + "</sonvel:product><sonvel:counter>" +
                    QByteArray::number(counter) + "</sonvel:counter><sonvel:expires>" + expires +
                    "</sonvel:expires>" + more;
  for (const FeedItem& item : items)
    feed += QStringLiteral("<item><sparkle:version>%1</sparkle:version><sparkle:channel>%2</sparkle:channel>"
                           "<sparkle:minimumSystemVersion>%3</sparkle:minimumSystemVersion>"
                           "<sonvel:architecture>%4</sonvel:architecture>"
                           "<description><![CDATA[<p>What is new:</p><ul><li>more</li></ul>]]></description>"
                           "<enclosure url=\"%5\" length=\"%6\" sonvel:sha256=\"%7\"/>%8</item>")
                .arg(item.version, item.channel, item.minimumSystemVersion, item.architecture, item.address)
                .arg(item.length)
                .arg(QString::fromLatin1(item.hash), QString::fromUtf8(item.more))
                .toUtf8();
  return feed + "</channel></rss>\n";
}

UpdaterWorld::UpdaterWorld(const std::optional<QSslConfiguration>& security, Installation::Kind kind)
    : kind_(kind)
    , server_(security) {
  folder.writeProgram("bin/program", oldFile.toStdString());
  serveGood();
  start();
}

UpdaterEnvironment UpdaterWorld::environment() {
  return {.clock = clock,
          .preferences = preferences,
          .packageInstaller = packages,
          .relaunch = relaunch,
          .requestQuit = [this] { ++quitRequests; },
          .calendarTime = [this] { return calendarTime; },
          .installation = {kind_, program()},
          .product = QStringLiteral("com.example.program"),
          .installedVersion = QStringLiteral("1.0"),
          .systemVersion = QStringLiteral("6.1.0"),
          .architecture = QStringLiteral("test-cpu")};
}

void UpdaterWorld::start() {
  updater_.reset();
  const std::string feed = server_.url(QStringLiteral("/appcast.xml")).toString().toStdString();
  updater_ = std::make_unique<AppcastUpdater>(
      environment(), UpdateSource{feed, key.publicKey(), additionalKey}, channels, MakeUpdateSurface());
}

FeedItem UpdaterWorld::item(const char* version) const {
  return {.version = QString::fromLatin1(version),
          .address = server_.url(QStringLiteral("/update")).toString(),
          .length = newFile.size(),
          .hash = signing::hashText(newFile)};
}

void UpdaterWorld::serveGood() {
  serve({.items = {item()}});
  serveFile(newFile);
}

bool UpdaterWorld::waitFor(UpdateStage stage) {
  return waitUntil([&] { return state().stage == stage || state().stage == UpdateStage::failed; }) &&
         state().stage == stage;
}

void UpdaterWorld::advanceTo(UpdateStage target) {
  cycle().check(UpdateCycle::Asker::user);
  while (state().stage != target) {
    const UpdateStage before = state().stage;
    if (before == UpdateStage::available || before == UpdateStage::ready) cycle().proceed();
    if (state().stage == target) return;
    const auto hasMoved = [&] { return state().stage != before || state().stage == target; };
    ASSERT_TRUE(waitUntil(hasMoved)) << static_cast<int>(before);
    ASSERT_NE(state().stage, UpdateStage::failed);
  }
}

void UpdaterWorld::expectFailure(UpdateFailure failure) {
  ASSERT_TRUE(waitFor(UpdateStage::failed)) << "stage " << static_cast<int>(state().stage);
  EXPECT_EQ(static_cast<int>(*state().failure), static_cast<int>(failure));
  EXPECT_TRUE(state().isVisible);
  EXPECT_EQ(quitRequests, 0);
  EXPECT_EQ(installedProgram(), oldFile);
  EXPECT_EQ(programFolder(), QStringList("program"));
}

QByteArray UpdaterWorld::contentOf(const std::filesystem::path& file) {
  QFile opened(file);
  EXPECT_TRUE(opened.open(QIODevice::ReadOnly));
  return opened.readAll();
}

QStringList UpdaterWorld::programFolder() const {
  return QDir(QString::fromStdString(folder.path("bin")))
      .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace sonvel::updater
