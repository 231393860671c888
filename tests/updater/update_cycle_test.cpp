#include "updater/updater_world.h"

#include <gmock/gmock.h>

#include <QThreadPool>

namespace sonvel::updater {
namespace {

using std::chrono::hours;
using testing::ElementsAre;

struct RecordingObserver final : UpdateObserver {
  void updateStateChanged() override { changed(); }

  void updateAttentionWanted() override { ++attentionWanted; }

  std::function<void()> changed = [] {};
  int attentionWanted = 0;
};

TEST(UpdateCycle, asksTheUserBeforeItDownloadsAndBeforeItInstalls) {
  UpdaterWorld world;
  world.newFile += QByteArray(4'000'000, 'n');
  world.serveGood();
  world.advanceTo(UpdateStage::available);
  EXPECT_EQ(world.state().installedVersion, "1.0");
  EXPECT_EQ(world.state().offeredVersion, "1.1");
  EXPECT_EQ(world.state().notes, "What is new:\n\n\u2022 more");
  EXPECT_EQ(world.server().requestCount("/update"), 0);

  std::set<qint64> progress;
  RecordingObserver observer;
  observer.changed = [&] { progress.insert(world.state().receivedBytes); };
  world.cycle().setObserver(&observer);
  world.cycle().proceed();
  ASSERT_TRUE(world.waitFor(UpdateStage::ready));
  EXPECT_GT(progress.size(), 5U);
  EXPECT_EQ(*progress.rbegin(), world.newFile.size());
  EXPECT_EQ(world.installedProgram(), world.oldFile);

  world.cycle().check(UpdateCycle::Asker::user);
  EXPECT_EQ(observer.attentionWanted, 1) << "who asks again sees what there is";
  EXPECT_EQ(world.checks(), 1);
  world.cycle().proceed();
  ASSERT_TRUE(world.waitFor(UpdateStage::restarting));
  EXPECT_EQ(world.installedProgram(), world.newFile);
  EXPECT_THAT(world.programFolder(), ElementsAre(".program.previous", "program"));
  EXPECT_EQ(world.quitRequests, 1);
  EXPECT_TRUE(world.relaunch.isRequested());
}

TEST(UpdateCycle, offersTheNewestThatIsMeantForThisBuild) {
  UpdaterWorld world;
  const auto item = [&](const char* version, const char* channel = "", const char* system = "",
                        const char* architecture = "test-cpu") {
    FeedItem made = world.item(version);
    made.channel = QLatin1String(channel);
    made.minimumSystemVersion = QLatin1String(system);
    made.architecture = QLatin1String(architecture);
    return made;
  };
  FeedItem faulty = item("1.9");
  faulty.hash.clear();

  struct Case {
    QList<FeedItem> items;
    std::set<std::string> channels;
    UpdateStage stage;
    std::string version = {};
  };

  const QList<FeedItem> stableAndBeta{item("1.2-beta", "beta"), item("1.1")};
  const Case cases[] = {
      {stableAndBeta, {}, UpdateStage::available, "1.1"},
      {stableAndBeta, {"beta"}, UpdateStage::available, "1.2-beta"},
      {{item("1.2-beta", "Beta")}, {"beta"}, UpdateStage::upToDate},
      {{item("1.1"), item("1.3"), item("1.2")}, {}, UpdateStage::available, "1.3"},
      {{faulty, item("1.3")}, {}, UpdateStage::available, "1.3"},
      {{item("1.4", "", "", "other-cpu"), item("1.3")}, {}, UpdateStage::available, "1.3"},
      {{item("1.0"), item("0.9")}, {}, UpdateStage::upToDate},
      {{}, {}, UpdateStage::upToDate},
      {{item("1.5", "", "6.2"), item("1.4", "", "6.1")}, {}, UpdateStage::available, "1.4"},
      {{item("1.5", "", "6.2")}, {}, UpdateStage::needsNewerSystem},
      {{item("1.5", "", "unreadable")}, {}, UpdateStage::needsNewerSystem},
  };
  for (const Case& one : cases) {
    world.preferences.texts.clear();
    world.channels = std::make_shared<SonvelSparkleChannelDelegate>(one.channels);
    world.start();
    world.serve({.items = one.items});
    world.advanceTo(one.stage);
    EXPECT_TRUE(one.version.empty() || world.state().offeredVersion == one.version) << one.version;
  }
}

TEST(UpdateCycle, takesASignatureOfEitherKey) {
  UpdaterWorld world;
  const SecretKey next;
  world.additionalKey = next.publicKey();
  world.start();
  for (const QList<SecretKey>& keys :
       {QList{world.key}, QList{next}, QList{world.key, next}, QList{SecretKey(), next}}) {
    world.serveText(signedFeed(Feed{.items = {world.item()}}.xml(), keys));
    world.advanceTo(UpdateStage::available);
    world.cycle().cancel();
  }
}

TEST(UpdateCycle, showsOneCleanLineForAVersion) {
  UpdaterWorld world;
  FeedItem item = world.item();
  item.more = "<sparkle:shortVersionString>1.1\n\u202E\u2066Safe \u200Fnow" + QByteArray(100, 'x') +
              "</sparkle:shortVersionString>";
  world.serve({.items = {item}});
  world.advanceTo(UpdateStage::available);
  EXPECT_EQ(world.state().offeredVersion, "1.1 Safe now" + std::string(52, 'x'));
}

TEST(UpdateCycle, followsSafeRedirects) {
  UpdaterWorld world;
  world.server().set("/real", {.body = signedFeed(Feed{.items = {world.item()}}.xml(), {world.key})});
  world.server().setRedirect("/second", "real");
  world.server().setRedirect("/appcast.xml", world.server().url("/second").toString());
  world.server().set("/file", {.body = world.newFile});
  world.server().setRedirect("/update", "/file");
  world.advanceTo(UpdateStage::ready);
}

TEST(UpdateCycle, showsOfTheSchedulesChecksOnlyWhatCanBeTaken) {
  UpdaterWorld world;
  const auto check = [&](UpdateStage stage) {
    world.cycle().check(UpdateCycle::Asker::schedule);
    ASSERT_TRUE(waitUntil([&] { return world.state().stage == stage; }));
  };
  world.serveText("no feed");
  check(UpdateStage::failed);
  EXPECT_FALSE(world.state().isVisible);
  world.serve({});
  check(UpdateStage::upToDate);
  EXPECT_FALSE(world.state().isVisible);

  // What the user asks for in the meantime is theirs from then on, and stays.
  world.cycle().check(UpdateCycle::Asker::schedule);
  world.cycle().check(UpdateCycle::Asker::user);
  ASSERT_TRUE(world.waitFor(UpdateStage::upToDate));
  EXPECT_TRUE(world.state().isVisible);
  EXPECT_FALSE(world.state().isUnasked);
  world.serveGood();
  check(UpdateStage::upToDate);

  world.cycle().cancel();
  check(UpdateStage::available);
  EXPECT_TRUE(world.state().isVisible);
  EXPECT_TRUE(world.state().isUnasked);
  world.cycle().check(UpdateCycle::Asker::user);
  EXPECT_FALSE(world.state().isUnasked);
}

TEST(UpdateCycle, installsNothingOfWhatIsCancelled) {
  for (const UpdateStage stage : {UpdateStage::checking, UpdateStage::available, UpdateStage::downloading,
                                  UpdateStage::verifying, UpdateStage::ready}) {
    UpdaterWorld world;
    world.advanceTo(stage);
    world.cycle().cancel();
    EXPECT_EQ(world.state().stage, UpdateStage::idle);
    EXPECT_FALSE(world.state().isVisible);
    world.advanceTo(UpdateStage::ready);
    EXPECT_THAT(world.programFolder(), ElementsAre("program"));
  }
}

TEST(UpdateCycle, isCancelledDuringInstallationWhollyOrNotAtAll) {
  UpdaterWorld world;
  world.advanceTo(UpdateStage::installing);
  world.cycle().cancel();
  ASSERT_TRUE(waitUntil([&] { return world.state().stage == UpdateStage::idle || world.quitRequests == 1; }));
  QThreadPool::globalInstance()->waitForDone();
  EXPECT_EQ(world.installedProgram(), world.quitRequests == 1 ? world.newFile : world.oldFile);
  EXPECT_EQ(world.programFolder().size(), world.quitRequests == 1 ? 2 : 1);
}

/// The download of one run of the program lives in no folder that another could sweep or change.
TEST(UpdateCycle, leavesTheDownloadOfAnotherRunAlone) {
  UpdaterWorld first;
  first.advanceTo(UpdateStage::ready);
  UpdaterWorld second;
  second.advanceTo(UpdateStage::available);
  first.cycle().proceed();
  EXPECT_TRUE(first.waitFor(UpdateStage::restarting));
}

TEST(PackageUpdate, isHandedOverByAPathThatNobodyCanChange) {
  UpdaterWorld world(std::nullopt, Installation::Kind::package);
  world.newFile = "!<arch>\ndebian-binary and more";
  world.serveGood();
  world.advanceTo(UpdateStage::handedOver);
  ASSERT_EQ(world.packages.packages.size(), 1U);
  const std::filesystem::path path = world.packages.packages[0]->path();
  QFile package(path);
  ASSERT_TRUE(package.open(QIODevice::ReadOnly));
  EXPECT_EQ(package.readAll(), world.newFile);
  EXPECT_FALSE(QFile(path).open(QIODevice::ReadWrite | QIODevice::Truncate)) << "it is sealed";
  QFile writer(path);
  EXPECT_TRUE(!writer.open(QIODevice::ReadWrite | QIODevice::Unbuffered) || writer.write("x") < 0);
  EXPECT_EQ(world.installedProgram(), world.oldFile);
  EXPECT_EQ(world.quitRequests, 0);
}

TEST(PackageUpdate, failsWithoutAnInstallerOrAPackage) {
  UpdaterWorld world(std::nullopt, Installation::Kind::package);
  world.packages.takes = false;
  for (const auto& [content, failure] : {std::pair{"\x7f"
                                                   "ELF",
                                                   UpdateFailure::wrongKindOfFile},
                                         std::pair{"\xed\xab\xee\xdb", UpdateFailure::noPackageInstaller}}) {
    world.newFile = content;
    world.serveGood();
    world.advanceTo(UpdateStage::ready);
    world.cycle().proceed();
    world.expectFailure(failure);
  }
}

/// An updater that starts again and again, as the program does, while time passes.
class DailyChecks : public testing::Test {
 protected:
  /// Hour by hour, and any check that comes up ends.
  void pass(hours time) {
    for (; time.count() > 0; --time) {
      world_.calendarTime += hours(1);
      world_.clock.advance(hours(1));
      QCoreApplication::processEvents();
      ASSERT_TRUE(waitUntil([&] { return world_.state().stage != UpdateStage::checking; }));
      world_.cycle().cancel();
    }
  }

  UpdaterWorld world_;
};

TEST_F(DailyChecks, happenOnceADayOverAllStarts) {
  world_.serve({});
  pass(hours(1));
  EXPECT_EQ(world_.checks(), 1);
  pass(hours(20));
  world_.start();
  pass(hours(2));
  EXPECT_EQ(world_.checks(), 1) << "the day isn't over";
  pass(hours(2));
  EXPECT_EQ(world_.checks(), 2);
  world_.calendarTime += hours(30); // the computer slept
  pass(hours(1));
  EXPECT_EQ(world_.checks(), 3);
  world_.calendarTime -= hours(1'000); // somebody set the clock back
  pass(hours(2));
  EXPECT_EQ(world_.checks(), 4);
}

TEST_F(DailyChecks, areRepeatedAfterAFailureAndAfterAFaultyItem) {
  FeedItem faulty = world_.item("1.9");
  faulty.length = 0;
  const auto serveFaulty = [&] { world_.serve({.items = {faulty, world_.item()}}); };
  for (const std::function<void()>& serve :
       {std::function<void()>([&] { world_.serveText("no feed"); }), std::function<void()>(serveFaulty)}) {
    serve();
    const int before = world_.checks();
    pass(hours(4));
    EXPECT_GE(world_.checks(), before + 3);
  }
}

TEST_F(DailyChecks, forgetThePreviousProgramOnceThisOneHasRun) {
  world_.folder.write("bin/.program.previous", "old");
  world_.folder.write("bin/.program.update", "cut off");
  world_.start();
  world_.clock.advance(std::chrono::seconds(60));
  QCoreApplication::processEvents();
  EXPECT_EQ(world_.programFolder().size(), 3);
  pass(hours(1));
  EXPECT_THAT(world_.programFolder(), ElementsAre("program"));
}

TEST_F(DailyChecks, startWithTheReasonWhyANewerVersionWasUndone) {
  qputenv("SONVEL_UPDATE_UNDONE", "died");
  world_.start();
  EXPECT_EQ(world_.state().failure, UpdateFailure::newVersionDied);
  EXPECT_TRUE(world_.state().isVisible && world_.state().isUnasked);
  world_.start();
  EXPECT_EQ(world_.state().stage, UpdateStage::idle) << "it is told once";
}

} // namespace
} // namespace sonvel::updater
