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
  const QByteArray version = "<sparkle:shortVersionString>1.1\n\u202E\u2066Safe \u200Fnow" +
                             QByteArray(100, 'x') + "</sparkle:shortVersionString>";
  world.server.set("/real", {.body = world.signedFeed(world.feed(world.item("1.1", version)))});
  world.server.redirect("/second", "real");
  world.server.redirect("/appcast.xml", world.server.url("/second"));
  world.server.set("/file", {.body = world.newFile});
  world.server.redirect("/update", "/file");
  world.advanceTo(UpdateStage::available);
  EXPECT_EQ(world.state().installedVersion, "1.0");
  EXPECT_EQ(world.state().offeredVersion, "1.1 Safe now" + std::string(52, 'x')) << "one clean line";
  EXPECT_EQ(world.state().notes, "New:\n\n\u2022 more");
  EXPECT_EQ(world.server.requestCount("/file"), 0);

  std::set<qint64> progress;
  RecordingObserver observer;
  observer.changed = [&] { progress.insert(world.state().receivedBytes); };
  world.cycle().setObserver(&observer);
  world.cycle().proceed();
  ASSERT_TRUE(world.waitFor(UpdateStage::ready));
  EXPECT_GT(progress.size(), 5U);
  EXPECT_EQ(*progress.rbegin(), world.newFile.size());
  EXPECT_EQ(world.installedProgram(), kOldFile);

  world.cycle().check(UpdateCycle::Asker::user);
  EXPECT_EQ(observer.attentionWanted, 1) << "who asks again sees what there is";
  EXPECT_EQ(world.checks(), 1);
  world.folder.write("bin/.program.update", "of a run that was cut off");
  world.cycle().proceed();
  ASSERT_TRUE(world.waitFor(UpdateStage::restarting));
  EXPECT_EQ(world.installedProgram(), world.newFile);
  EXPECT_THAT(world.programFolder(), ElementsAre(".program.previous", "program"));
  EXPECT_EQ(world.quitRequests, 1);
  EXPECT_TRUE(world.relaunch.isRequested());
  world.start();                  // as the new version
  for (const int left : {2, 1}) { // the version of before watches the new one for a minute
    world.clock.advance(std::chrono::seconds(50));
    QCoreApplication::processEvents();
    EXPECT_EQ(world.programFolder().size(), left);
  }
}

TEST(UpdateCycle, offersTheNewestThatIsMeantForThisBuild) {
  UpdaterWorld world;
  const auto item = [&](const char* version, const char* channel = "", const char* system = "",
                        const char* architecture = "test-cpu") {
    return world.item(version, QByteArray("<sparkle:channel>") + channel +
                                   "</sparkle:channel><sparkle:minimumSystemVersion>" + system +
                                   "</sparkle:minimumSystemVersion><sonvel:architecture>" + architecture +
                                   "</sonvel:architecture>");
  };

  const struct {
    QByteArray items;
    UpdateStage stage;
    const char* version = "";
    std::set<std::string> channels = {};
  } cases[] = {
      {item("1.2-beta", "beta") + item("1.1"), UpdateStage::available, "1.1"},
      {item("1.2-beta", "beta") + item("1.1"), UpdateStage::available, "1.2-beta", {"beta"}},
      {item("1.2-beta", "Beta"), UpdateStage::upToDate, "", {"beta"}},
      {item("1.1") + item("1.3") + item("1.2"), UpdateStage::available, "1.3"},
      {item("1.9", "", "", "") + item("1.3"), UpdateStage::available, "1.3"},
      {item("1.4", "", "", "other-cpu") + item("1.3"), UpdateStage::available, "1.3"},
      {item("1.0"), UpdateStage::upToDate},
      {item("1.5", "", "6.2") + item("1.4", "", "6.1"), UpdateStage::available, "1.4"},
      {item("1.5", "", "unreadable"), UpdateStage::needsNewerSystem},
  };

  for (const auto& [items, stage, version, channels] : cases) {
    world.preferences = {};
    world.channels = std::make_shared<SonvelSparkleChannelDelegate>(channels);
    world.start();
    world.serve(items);
    world.advanceTo(stage);
    EXPECT_EQ(world.state().offeredVersion, version);
  }
}

TEST(UpdateCycle, showsOfTheSchedulesChecksOnlyWhatCanBeTaken) {
  UpdaterWorld world;
  const auto check = [&](UpdateCycle::Asker asker, UpdateStage stage, bool isVisible, bool isUnasked) {
    world.cycle().check(asker);
    ASSERT_TRUE(waitUntil([&] { return world.state().stage == stage; }));
    EXPECT_EQ(world.state().isVisible, isVisible);
    EXPECT_EQ(world.state().isUnasked, isUnasked);
  };
  using enum UpdateCycle::Asker;
  world.serveText("no feed");
  check(schedule, UpdateStage::failed, false, true);
  world.serve({});
  check(schedule, UpdateStage::checking, false, true);
  check(user, UpdateStage::upToDate, true, false); // now visible to the user until they close it
  world.serveGood();
  check(schedule, UpdateStage::upToDate, true, false);
  world.cycle().cancel();
  check(schedule, UpdateStage::available, true, true);
  check(user, UpdateStage::available, true, false);
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
  EXPECT_EQ(world.installedProgram(), world.quitRequests == 1 ? world.newFile : kOldFile);
  EXPECT_EQ(world.programFolder().size(), world.quitRequests == 1 ? 2 : 1);
}

TEST(UpdateCycle, leavesTheDownloadOfAnotherRunAlone) {
  UpdaterWorld first;
  first.advanceTo(UpdateStage::ready);
  UpdaterWorld second;
  second.advanceTo(UpdateStage::available);
  first.cycle().proceed();
  EXPECT_TRUE(first.waitFor(UpdateStage::restarting));
}

TEST(PackageUpdate, isHandedOverByAPathThatNobodyCanChange) {
  UpdaterWorld world(Installation::Kind::package);
  world.newFile = "!<arch>\ndebian-binary and more";
  world.serveGood();
  world.advanceTo(UpdateStage::handedOver);
  ASSERT_NE(world.packages.taken, nullptr);
  const std::filesystem::path path = world.packages.taken->path();
  EXPECT_EQ(contentOf(path), world.newFile);
  EXPECT_FALSE(QFile(path).open(QIODevice::ReadWrite | QIODevice::Truncate)) << "it is sealed";
  QFile writer(path);
  EXPECT_TRUE(!writer.open(QIODevice::ReadWrite | QIODevice::Unbuffered) || writer.write("x") < 0);
  EXPECT_EQ(world.installedProgram(), kOldFile);
  EXPECT_EQ(world.quitRequests, 0);
}

TEST(PackageUpdate, failsWithoutAnInstallerOrAPackage) {
  UpdaterWorld world(Installation::Kind::package);
  world.packages.takes = false;
  for (const auto& [content, failure] : {std::pair{kNewFile, UpdateFailure::wrongKindOfFile},
                                         {"\xed\xab\xee\xdb", UpdateFailure::noPackageInstaller}}) {
    world.newFile = content;
    world.serveGood();
    world.advanceTo(UpdateStage::ready);
    world.cycle().proceed();
    world.expectFailure(failure);
  }
}

/// An updater that is restarted repeatedly while time passes.
class DailyChecks : public testing::Test {
 protected:
  /// Advances by hours; waits for checks that begin meanwhile.
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
  pass(hours(21));
  EXPECT_EQ(world_.checks(), 1);
  world_.start();
  pass(hours(2));
  EXPECT_EQ(world_.checks(), 1) << "the day isn't over";
  pass(hours(2));
  EXPECT_EQ(world_.checks(), 2);
  world_.calendarTime += hours(30); // the computer slept
  pass(hours(1));
  EXPECT_EQ(world_.checks(), 3);
  world_.calendarTime -= hours(1'000); // the clock was set back
  pass(hours(2));
  EXPECT_EQ(world_.checks(), 4);
}

TEST_F(DailyChecks, areRepeatedAfterAFailureAndAfterAFaultyItem) {
  const QByteArray faulty = world_.item("1.9", "<sonvel:architecture/>") + world_.item();
  for (const QByteArray& feed : {QByteArray("no feed"), world_.signedFeed(world_.feed(faulty))}) {
    world_.serveText(feed);
    const int before = world_.checks();
    pass(hours(4));
    EXPECT_GE(world_.checks(), before + 3);
  }
}

} // namespace
} // namespace sonvel::updater
