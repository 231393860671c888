#include "updater/test_certificates.h"
#include "updater/updater_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QThreadPool>

namespace sonvel::updater {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class RecordingObserver final : public UpdateObserver {
 public:
  explicit RecordingObserver(std::function<void()> changed = [] {})
      : changed_(std::move(changed)) {}

  void updateStateChanged() override { changed_(); }

  void updateAttentionWanted() override { ++attentionWanted; }

  int attentionWanted = 0;

 private:
  std::function<void()> changed_;
};

/// Whether the feed comes over TLS, or over plain HTTP from a local host as under development.
class UpdateCycleTest : public testing::TestWithParam<bool> {
 protected:
  static std::optional<QSslConfiguration> security() {
    return GetParam() ? std::optional(testCertificates().trusted()) : std::nullopt;
  }
};

INSTANTIATE_TEST_SUITE_P(Transports, UpdateCycleTest, testing::Bool(),
                         [](const auto& parameter) { return parameter.param ? "https" : "localHttp"; });

TEST_P(UpdateCycleTest, takesAnUpdateFromTheCheckToTheRestart) {
  UpdaterWorld world(security());
  world.newFile += QByteArray(4'000'000, 'n');
  world.serveGood();
  world.advanceTo(UpdateStage::available);
  const UpdateState& state = world.cycle().state();
  EXPECT_TRUE(state.isVisible);
  EXPECT_EQ(state.installedVersion, "1.0");
  EXPECT_EQ(state.offeredVersion, "1.1");
  EXPECT_EQ(state.notes, "What is new:\n\n\u2022 more");
  EXPECT_EQ(world.server().requestCount("/update"), 0) << "nothing is downloaded before the user takes it";

  std::set<qint64> progress;
  RecordingObserver observer([&] { progress.insert(state.receivedBytes); });
  world.cycle().setObserver(&observer);
  world.cycle().proceed();
  ASSERT_TRUE(world.waitFor(UpdateStage::ready));
  EXPECT_GT(progress.size(), 5U);
  EXPECT_EQ(*progress.rbegin(), world.newFile.size());
  EXPECT_EQ(world.installedProgram(), world.oldFile) << "nothing is installed before the user says so";

  world.cycle().proceed();
  ASSERT_TRUE(world.waitFor(UpdateStage::restarting));
  EXPECT_EQ(world.installedProgram(), world.newFile);
  EXPECT_THAT(world.programFolder(), ElementsAre(".program.previous", "program"));
  EXPECT_THAT(world.downloads(), IsEmpty());
  EXPECT_EQ(world.quitRequests, 1);
  EXPECT_TRUE(world.relaunch.isRequested());
}

TEST_P(UpdateCycleTest, offersWhatTheChannelAndTheSystemAllow) {
  struct Case {
    QList<FeedItem> items;
    std::set<std::string> channels;
    UpdateStage stage;
    std::string version;
  };

  UpdaterWorld world(security());
  const auto item = [&](const char* version, const char* channel = "", const char* system = "") {
    FeedItem made = world.goodItem();
    made.version = QString::fromLatin1(version);
    made.channel = QString::fromLatin1(channel);
    made.minimumSystemVersion = QString::fromLatin1(system);
    return made;
  };
  const QList<FeedItem> stableAndBeta{item("1.2-beta", "beta"), item("1.1")};
  const Case cases[] = {
      {stableAndBeta, {}, UpdateStage::available, "1.1"},
      {stableAndBeta, {"beta"}, UpdateStage::available, "1.2-beta"},
      {{item("1.2-beta", "beta")}, {}, UpdateStage::upToDate, ""},
      {{item("1.2-beta", "Beta")}, {"beta"}, UpdateStage::upToDate, ""},
      {{item("1.1"), item("1.3"), item("1.2")}, {}, UpdateStage::available, "1.3"},
      {{item("1.0")}, {}, UpdateStage::upToDate, ""},
      {{item("0.9")}, {}, UpdateStage::upToDate, ""},
      {{item("no version")}, {}, UpdateStage::upToDate, ""},
      {{}, {}, UpdateStage::upToDate, ""},
      {{item("1.2", "", "6.2"), item("1.1", "", "6.1")}, {}, UpdateStage::available, "1.1"},
      {{item("1.2", "", "6.2")}, {}, UpdateStage::needsNewerSystem, ""},
      {{item("1.2", "", "unreadable")}, {}, UpdateStage::needsNewerSystem, ""},
  };
  for (const Case& one : cases) {
    world.serveFeed(UpdaterWorld::feedOf(one.items));
    world.allowedChannels = one.channels;
    world.cycle().check(UpdateCycle::Asker::user);
    ASSERT_TRUE(world.waitFor(one.stage)) << one.version;
    if (!one.version.empty()) {
      EXPECT_EQ(world.cycle().state().offeredVersion, one.version);
    }
    EXPECT_TRUE(world.cycle().state().isVisible);
    world.cycle().cancel();
  }
}

TEST_P(UpdateCycleTest, followsSafeRedirects) {
  UpdaterWorld world(security());
  world.server().set("/real", {.body = UpdaterWorld::feedOf({world.goodItem()})});
  world.server().setRedirect("/second", world.server().url("/third").toString());
  world.server().setRedirect("/third", "real");
  world.server().setRedirect("/appcast.xml", "/second");
  world.advanceTo(UpdateStage::available);
  world.server().set("/file", {.body = world.newFile});
  world.server().setRedirect("/update", "/file");
  world.cycle().proceed();
  EXPECT_TRUE(world.waitFor(UpdateStage::ready));
}

TEST_P(UpdateCycleTest, checksOfTheScheduleShowOnlyWhatCanBeTaken) {
  UpdaterWorld world(security());
  world.serveFeed("this is no feed");
  world.cycle().check(UpdateCycle::Asker::schedule);
  ASSERT_TRUE(waitUntil([&] { return world.stage() == UpdateStage::failed; }));
  EXPECT_FALSE(world.cycle().state().isVisible);

  world.serveFeed(UpdaterWorld::feedOf({}));
  world.cycle().check(UpdateCycle::Asker::schedule);
  ASSERT_TRUE(waitUntil([&] { return world.stage() == UpdateStage::upToDate; }));
  EXPECT_FALSE(world.cycle().state().isVisible);

  // One that the user joins is theirs from then on.
  world.cycle().check(UpdateCycle::Asker::schedule);
  world.cycle().check(UpdateCycle::Asker::user);
  ASSERT_TRUE(waitUntil([&] { return world.stage() == UpdateStage::upToDate; }));
  EXPECT_TRUE(world.cycle().state().isVisible);

  // What they read stays in spite of the schedule.
  world.serveGood();
  world.cycle().check(UpdateCycle::Asker::schedule);
  EXPECT_EQ(world.stage(), UpdateStage::upToDate);
  world.cycle().cancel();
  world.cycle().check(UpdateCycle::Asker::schedule);
  ASSERT_TRUE(world.waitFor(UpdateStage::available));
  EXPECT_TRUE(world.cycle().state().isVisible);
}

TEST_P(UpdateCycleTest, leavesNothingWhenItIsCancelled) {
  for (const UpdateStage stage : {UpdateStage::checking, UpdateStage::available, UpdateStage::downloading,
                                  UpdateStage::verifying, UpdateStage::ready}) {
    UpdaterWorld world(security());
    world.advanceTo(stage);
    world.cycle().cancel();
    EXPECT_EQ(world.stage(), UpdateStage::idle);
    EXPECT_FALSE(world.cycle().state().isVisible);
    EXPECT_THAT(world.downloads(), IsEmpty());

    world.advanceTo(UpdateStage::ready);
    EXPECT_EQ(world.installedProgram(), world.oldFile);
    EXPECT_THAT(world.programFolder(), ElementsAre("program"));
  }
}

TEST_P(UpdateCycleTest, stopsInTheMiddleOfADownload) {
  UpdaterWorld world(security());
  world.server().set("/update", {.body = world.newFile.left(100'000),
                                 .announcedLength = world.newFile.size(),
                                 .ending = Answer::Ending::keptOpen});
  world.advanceTo(UpdateStage::downloading);
  ASSERT_TRUE(waitUntil([&] { return world.cycle().state().receivedBytes == 100'000; }));
  EXPECT_THAT(world.downloads(), SizeIs(2)) << "a folder with a file";
  world.cycle().cancel();
  EXPECT_THAT(world.downloads(), IsEmpty());
  EXPECT_EQ(world.stage(), UpdateStage::idle);

  world.serveGood();
  world.advanceTo(UpdateStage::ready);
}

TEST_P(UpdateCycleTest, isCancelledDuringInstallationWhollyOrNotAtAll) {
  UpdaterWorld world(security());
  world.advanceTo(UpdateStage::installing);
  world.cycle().cancel();
  ASSERT_TRUE(waitUntil([&] { return world.stage() == UpdateStage::idle || world.quitRequests == 1; }));
  QThreadPool::globalInstance()->waitForDone();
  EXPECT_EQ(world.installedProgram(), world.quitRequests == 1 ? world.newFile : world.oldFile);
  EXPECT_EQ(world.programFolder().size(), world.quitRequests == 1 ? 2 : 1);
  EXPECT_THAT(world.downloads(), IsEmpty());
}

TEST_P(UpdateCycleTest, aSecondWishBringsTheFirstToTheFront) {
  UpdaterWorld world(security());
  RecordingObserver observer;
  world.cycle().setObserver(&observer);
  world.advanceTo(UpdateStage::ready);
  EXPECT_EQ(observer.attentionWanted, 0);
  world.cycle().check(UpdateCycle::Asker::user);
  EXPECT_EQ(observer.attentionWanted, 1);
  EXPECT_EQ(world.stage(), UpdateStage::ready);
  EXPECT_EQ(world.server().requestCount("/appcast.xml"), 1);
}

TEST(UpdateCycleOfAPackage, handsTheVerifiedPackageOver) {
  UpdaterWorld world(testCertificates().trusted(), Installation::Kind::package);
  world.newFile = "!<arch>\ndebian-binary and more";
  world.serveGood();
  world.advanceTo(UpdateStage::installing);
  ASSERT_TRUE(world.waitFor(UpdateStage::handedOver));
  ASSERT_THAT(world.packages.packages, SizeIs(1));
  EXPECT_EQ(world.packages.packages[0].extension(), ".deb");
  EXPECT_EQ(UpdaterWorld::contentOf(world.packages.packages[0]), world.newFile);
  EXPECT_EQ(world.installedProgram(), world.oldFile);
  EXPECT_EQ(world.quitRequests, 0);

  world.packages.finished();
  EXPECT_THAT(world.downloads(), IsEmpty());
}

TEST(UpdateCycleOfAPackage, isCancelledWhollyOrNotAtAll) {
  UpdaterWorld world(testCertificates().trusted(), Installation::Kind::package);
  world.newFile = "!<arch>\ndebian-binary" + QByteArray(1'000'000, 'p');
  world.serveGood();
  world.advanceTo(UpdateStage::installing);
  world.cycle().cancel();
  ASSERT_TRUE(waitUntil([&] { return world.stage() != UpdateStage::installing; }));
  QThreadPool::globalInstance()->waitForDone();
  if (world.stage() == UpdateStage::handedOver) {
    EXPECT_THAT(world.packages.packages, SizeIs(1));
    world.packages.finished();
  } else {
    EXPECT_EQ(world.stage(), UpdateStage::idle);
    EXPECT_THAT(world.packages.packages, IsEmpty());
  }
  EXPECT_THAT(world.downloads(), IsEmpty());
}

TEST(UpdateCycleOfAPackage, failsWithoutAnInstallerOrAPackage) {
  UpdaterWorld world(testCertificates().trusted(), Installation::Kind::package);
  world.advanceTo(UpdateStage::installing);
  ASSERT_TRUE(waitUntil([&] { return world.stage() == UpdateStage::failed; }));
  EXPECT_EQ(world.cycle().state().failure, UpdateFailure::wrongKindOfFile);

  world.newFile = "\xed\xab\xee\xdb and more";
  world.packages.takes = false;
  world.serveGood();
  world.advanceTo(UpdateStage::installing);
  ASSERT_TRUE(waitUntil([&] { return world.stage() == UpdateStage::failed; }));
  EXPECT_EQ(world.cycle().state().failure, UpdateFailure::noPackageInstaller);
  EXPECT_THAT(world.downloads(), IsEmpty());
}

} // namespace
} // namespace sonvel::updater
