#include "updater/test_certificates.h"
#include "updater/updater_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <tuple>

namespace sonvel::updater {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// One thing that can be wrong, and what the user is told.
struct BadInput {
  const char* name;
  std::function<void(UpdaterWorld&)> spoil; ///< called when the world has come to `stage`
  UpdateStage stage;
  UpdateFailure failure;
};

constexpr qint64 kFiftyMegabytes = 50'000'000;

void spoilItem(UpdaterWorld& world, const std::function<void(FeedItem&)>& spoil) {
  FeedItem item = world.goodItem();
  spoil(item);
  world.serveFeed(UpdaterWorld::feedOf({item}));
}

void serveFeedWithBodies(UpdaterWorld& world, const QByteArray& body, qint64 repeats, qint64 announced) {
  world.server().set("/appcast.xml", {.body = body, .repeats = repeats, .announcedLength = announced});
}

QByteArray billionLaughs() {
  QByteArray entities = "<?xml version=\"1.0\"?><!DOCTYPE rss [<!ENTITY l0 \"ha\">";
  for (int level = 1; level < 10; ++level) {
    const QByteArray inner = "&l" + QByteArray::number(level - 1) + ";";
    entities += "<!ENTITY l" + QByteArray::number(level) + " \"" + inner.repeated(10) + "\">";
  }
  return entities + "]><rss><channel><title>&l9;</title></channel></rss>";
}

void replaceDownload(UpdaterWorld& world, const std::function<void(const QString&)>& replace) {
  const QStringList found = world.downloads().filter("/update");
  ASSERT_EQ(found.size(), 1);
  ASSERT_TRUE(QFile::remove(found.front()));
  replace(found.front());
}

void write(const QString& path, const QByteArray& content) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(content);
}

std::vector<BadInput> badFeeds() {
  using World = UpdaterWorld;
  const auto checking = UpdateStage::idle;
  return {
      {"noNetwork", [](World& world) { world.server().shutDown(); }, checking, UpdateFailure::noNetwork},
      {"missingFeed", [](World& world) { world.server().set("/appcast.xml", {.status = 404, .body = "no"}); },
       checking, UpdateFailure::serverRefused},
      {"brokenServer", [](World& world) { world.server().set("/appcast.xml", {.status = 503}); }, checking,
       UpdateFailure::serverRefused},
      {"emptyFeed", [](World& world) { world.serveFeed(""); }, checking, UpdateFailure::feedUnreadable},
      {"noXml", [](World& world) { world.serveFeed("GIF89a"); }, checking, UpdateFailure::feedUnreadable},
      {"html", [](World& world) { world.serveFeed("<html><body/></html>"); }, checking,
       UpdateFailure::feedNotFeed},
      {"feedThatBreaksOff",
       [](World& world) { world.serveFeed(World::feedOf({world.goodItem()}).chopped(9)); }, checking,
       UpdateFailure::feedUnreadable},
      {"connectionThatBreaksOff",
       [](World& world) {
         const QByteArray feed = World::feedOf({world.goodItem()});
         serveFeedWithBodies(world, feed.chopped(9), 1, feed.size());
       },
       checking, UpdateFailure::interrupted},
      {"fiftyMegabytes",
       [](World& world) {
         world.serveFeed("<rss><channel>" + QByteArray("<!-- more -->").repeated(kFiftyMegabytes / 13));
       },
       checking, UpdateFailure::feedTooLarge},
      {"longText",
       [](World& world) { world.serveFeed("<rss><title>" + QByteArray(70'000, 'x') + "</title>"); }, checking,
       UpdateFailure::feedTooLarge},
      {"manyItems",
       [](World& world) { world.serveFeed("<rss><channel>" + QByteArray("<item/>").repeated(2'000)); },
       checking, UpdateFailure::feedTooLarge},
      {"twoFeeds", [](World& world) { world.serveFeed("<rss></rss><rss></rss>"); }, checking,
       UpdateFailure::feedUnreadable},
      {"neverEnding",
       [](World& world) {
         serveFeedWithBodies(world, QByteArray(10'000, ' '), std::numeric_limits<qint64>::max(), -1);
       },
       checking, UpdateFailure::feedTooLarge},
      {"deep", [](World& world) { world.serveFeed("<rss>" + QByteArray("<a>").repeated(100'000)); }, checking,
       UpdateFailure::feedTooLarge},
      {"entity",
       [](World& world) {
         world.serveFeed("<!DOCTYPE rss [<!ENTITY file SYSTEM \"file:///etc/passwd\">]><rss>&file;</rss>");
       },
       checking, UpdateFailure::feedWithEntities},
      {"undefinedEntity", [](World& world) { world.serveFeed("<rss>&unknown;</rss>"); }, checking,
       UpdateFailure::feedUnreadable},
      {"billionLaughs", [](World& world) { world.serveFeed(billionLaughs()); }, checking,
       UpdateFailure::feedWithEntities},
      {"redirectToHttp",
       [](World& world) { world.server().setRedirect("/appcast.xml", "http://updates.example/a"); }, checking,
       UpdateFailure::insecureRedirect},
      {"redirectToFile",
       [](World& world) { world.server().setRedirect("/appcast.xml", "file:///etc/passwd"); }, checking,
       UpdateFailure::insecureRedirect},
      {"redirectToData",
       [](World& world) { world.server().setRedirect("/appcast.xml", "data:text/xml,<rss/>"); }, checking,
       UpdateFailure::insecureRedirect},
      {"redirectInCircles", [](World& world) { world.server().setRedirect("/appcast.xml", "/appcast.xml"); },
       checking, UpdateFailure::tooManyRedirects},
  };
}

std::vector<BadInput> badItems() {
  using World = UpdaterWorld;
  const auto address = [](const char* text) {
    return [text](World& world) {
      spoilItem(world, [&](FeedItem& item) { item.address = QString::fromLatin1(text); });
    };
  };
  const auto length = [](qint64 bytes) {
    return [bytes](World& world) { spoilItem(world, [&](FeedItem& item) { item.length = bytes; }); };
  };
  const auto signature = [](const QByteArray& bytes) {
    return [bytes](World& world) { spoilItem(world, [&](FeedItem& item) { item.signature = bytes; }); };
  };
  const auto checking = UpdateStage::idle;
  return {
      {"httpEnclosure", address("http://updates.example/update"), checking, UpdateFailure::insecureDownload},
      {"fileEnclosure", address("file:///bin/sh"), checking, UpdateFailure::insecureDownload},
      {"ftpEnclosure", address("ftp://updates.example/update"), checking, UpdateFailure::insecureDownload},
      {"relativeEnclosure", address("update"), checking, UpdateFailure::insecureDownload},
      {"noEnclosure", address(""), checking, UpdateFailure::insecureDownload},
      {"noLength", length(0), checking, UpdateFailure::downloadWithoutLength},
      {"negativeLength", length(-1), checking, UpdateFailure::downloadWithoutLength},
      {"hugeLength", length(10'000'000'000), checking, UpdateFailure::downloadTooLarge},
      {"noSignature", signature(""), checking, UpdateFailure::downloadWithoutSignature},
      {"shortSignature", signature(QByteArray(63, 's')), checking, UpdateFailure::downloadWithoutSignature},
  };
}

std::vector<BadInput> badFiles() {
  using World = UpdaterWorld;
  const auto available = UpdateStage::available;
  const auto ready = UpdateStage::ready;
  const auto redirect = [](const char* target) {
    return [target](World& world) { world.server().setRedirect("/update", QString::fromLatin1(target)); };
  };
  return {
      {"fileGone", [](World& world) { world.server().set("/update", {.status = 404}); }, available,
       UpdateFailure::serverRefused},
      {"fileRedirectedToHttp", redirect("http://updates.example/update"), available,
       UpdateFailure::insecureRedirect},
      {"fileRedirectedToFile", redirect("file:///bin/sh"), available, UpdateFailure::insecureRedirect},
      {"shorterFile", [](World& world) { world.serveFile(world.newFile.chopped(1)); }, available,
       UpdateFailure::wrongLength},
      {"longerFile", [](World& world) { world.serveFile(world.newFile + "x"); }, available,
       UpdateFailure::wrongLength},
      {"endlessFile",
       [](World& world) {
         world.server().set("/update", {.body = world.newFile, .repeats = 1'000'000, .announcedLength = -1});
       },
       available, UpdateFailure::wrongLength},
      {"truncatedFile",
       [](World& world) {
         world.server().set("/update",
                            {.body = world.newFile.chopped(100), .announcedLength = world.newFile.size()});
       },
       available, UpdateFailure::interrupted},
      {"anotherFile", [](World& world) { world.serveFile("x" + world.newFile.mid(1)); }, available,
       UpdateFailure::wrongSignature},
      {"fileReplaced",
       [](World& world) {
         replaceDownload(world, [&](const QString& path) { write(path, "x" + world.newFile.mid(1)); });
       },
       ready, UpdateFailure::changedAfterCheck},
      {"fileReplacedByLink",
       [](World& world) {
         replaceDownload(world, [&](const QString& path) { QFile::link(QStringLiteral("/bin/sh"), path); });
       },
       ready, UpdateFailure::changedAfterCheck},
      {"fileDeleted", [](World& world) { replaceDownload(world, [](const QString&) {}); }, ready,
       UpdateFailure::changedAfterCheck},
      {"programGone",
       [](World& world) {
         ASSERT_TRUE(QDir(QString::fromStdString(world.folder.path("bin"))).removeRecursively());
         world.folder.write("bin", "a file where the folder was");
       },
       ready, UpdateFailure::cannotReplace},
  };
}

/// What is wrong, and whether the server has TLS or is a local one under development.
class BadInputTest : public testing::TestWithParam<std::tuple<BadInput, bool>> {};

std::string nameOf(const testing::TestParamInfo<std::tuple<BadInput, bool>>& parameter) {
  const auto& [bad, isSecure] = parameter.param;
  return std::string(bad.name) + (isSecure ? "OverHttps" : "OverLocalHttp");
}

INSTANTIATE_TEST_SUITE_P(Feeds, BadInputTest,
                         testing::Combine(testing::ValuesIn(badFeeds()), testing::Bool()), nameOf);
INSTANTIATE_TEST_SUITE_P(Items, BadInputTest,
                         testing::Combine(testing::ValuesIn(badItems()), testing::Bool()), nameOf);
INSTANTIATE_TEST_SUITE_P(Files, BadInputTest,
                         testing::Combine(testing::ValuesIn(badFiles()), testing::Bool()), nameOf);

void expectFailure(UpdaterWorld& world, UpdateFailure failure) {
  ASSERT_TRUE(waitUntil([&] { return world.stage() == UpdateStage::failed; }))
      << "stage " << static_cast<int>(world.stage());
  ASSERT_TRUE(world.cycle().state().failure);
  EXPECT_EQ(static_cast<int>(*world.cycle().state().failure), static_cast<int>(failure));
  EXPECT_TRUE(world.cycle().state().isVisible);
  EXPECT_THAT(world.downloads(), IsEmpty());
  EXPECT_EQ(world.quitRequests, 0);
}

TEST_P(BadInputTest, endsInOneSentenceWithNothingInstalled) {
  const auto& [bad, isSecure] = GetParam();
  UpdaterWorld world(isSecure ? std::optional(testCertificates().trusted()) : std::nullopt);
  if (bad.stage != UpdateStage::idle) world.advanceTo(bad.stage);
  bad.spoil(world);
  bad.stage == UpdateStage::idle ? world.cycle().check(UpdateCycle::Asker::user) : world.cycle().proceed();
  expectFailure(world, bad.failure);
  if (bad.failure != UpdateFailure::cannotReplace) {
    EXPECT_EQ(world.installedProgram(), world.oldFile);
    EXPECT_THAT(world.programFolder(), ElementsAre("program"));
  }
  if (bad.failure == UpdateFailure::noNetwork) world.server().comeBack();
  world.serveGood();
  world.cycle().proceed();
  EXPECT_TRUE(world.waitFor(UpdateStage::available)) << "the next check must work";
}

TEST(BadSignature, ofAnotherKeyIsRefused) {
  UpdaterWorld world(testCertificates().trusted());
  spoilItem(world, [&](FeedItem& item) { item.signature = SigningKey().sign(world.newFile); });
  world.advanceTo(UpdateStage::available);
  world.cycle().proceed();
  expectFailure(world, UpdateFailure::wrongSignature);
  EXPECT_EQ(world.installedProgram(), world.oldFile);
}

TEST(BadCertificate, endsBeforeAnythingIsRead) {
  for (const QSslConfiguration& security : {testCertificates().untrusted(), testCertificates().otherHost()}) {
    UpdaterWorld world(security);
    world.cycle().check(UpdateCycle::Asker::user);
    expectFailure(world, UpdateFailure::insecureConnection);
    EXPECT_EQ(world.server().requestCount("/appcast.xml"), 0);
  }
}

TEST(LocalHttpFeed, doesNotMakeOtherHostsSafe) {
  UpdaterWorld world(std::nullopt);
  for (const char* address : {"http://updates.example/update", "http://[::1]:1/update", "file:///bin/sh"}) {
    spoilItem(world, [&](FeedItem& item) { item.address = QString::fromLatin1(address); });
    world.cycle().check(UpdateCycle::Asker::user);
    expectFailure(world, UpdateFailure::insecureDownload);
  }
  world.server().setRedirect("/appcast.xml", "http://updates.example/appcast.xml");
  world.cycle().check(UpdateCycle::Asker::user);
  expectFailure(world, UpdateFailure::insecureRedirect);
}

TEST(SilentServer, isGivenUp) {
  UpdaterWorld world(testCertificates().trusted());
  world.server().set("/appcast.xml",
                     {.body = "<rss>", .announcedLength = 100, .ending = Answer::Ending::keptOpen});
  world.cycle().check(UpdateCycle::Asker::user);
  ASSERT_TRUE(waitUntil([&] { return world.server().requestCount("/appcast.xml") == 1; }));
  world.clock.advance(std::chrono::seconds(31));
  expectFailure(world, UpdateFailure::tooSlow);

  world.serveGood();
  world.server().set("/update", {.body = "part", .announcedLength = 100, .ending = Answer::Ending::keptOpen});
  world.advanceTo(UpdateStage::downloading);
  ASSERT_TRUE(waitUntil([&] { return world.cycle().state().receivedBytes == 4; }));
  world.clock.advance(std::chrono::seconds(31));
  expectFailure(world, UpdateFailure::tooSlow);
}

/// No file may grow over a size while this exists.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes)
      : oldHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &old_);
    const rlimit limit{bytes, old_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }

  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, oldHandler_);
  }

  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit old_{};
  void (*oldHandler_)(int);
};

TEST(FailingWrites, areToldAndCleanedUp) {
  UpdaterWorld world(testCertificates().trusted());
  world.advanceTo(UpdateStage::available);
  {
    const FileSizeLimit limit(100'000);
    world.cycle().proceed();
    expectFailure(world, UpdateFailure::diskFull);
  }
  world.advanceTo(UpdateStage::ready);
  {
    const FileSizeLimit limit(100'000);
    world.cycle().proceed();
    expectFailure(world, UpdateFailure::diskFull);
  }
  EXPECT_EQ(world.installedProgram(), world.oldFile);
  EXPECT_THAT(world.programFolder(), ElementsAre("program"));
}

} // namespace
} // namespace sonvel::updater
