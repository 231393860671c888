#include "updater/program_version.h"
#include "updater/release_notes.h"
#include "updater/update_choice.h"
#include "updater/updater_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sonvel::updater {
namespace {

TEST(ProgramVersion, hasTheOrderOfReleases) {
  const char* ascending[] = {"0.9",   "1.0-alpha", "1.0-beta2", "1.0-beta10", "1.0",
                             "1.0.1", "1.2-beta",  "1.2",       "1.10",       "2"};
  for (std::size_t left = 0; left < std::size(ascending); ++left)
    for (std::size_t right = 0; right < std::size(ascending); ++right)
      EXPECT_EQ(*ProgramVersion::parse(ascending[left]) <=> *ProgramVersion::parse(ascending[right]),
                left <=> right)
          << ascending[left] << " and " << ascending[right];
  EXPECT_EQ(*ProgramVersion::parse("1.2"), *ProgramVersion::parse("1.2.0"));
  for (const QString& text : {QString(), QStringLiteral("beta"), QStringLiteral("-1"), QString(65, '1')})
    EXPECT_EQ(ProgramVersion::parse(text), std::nullopt) << text.toStdString();
}

TEST(PlainNotes, keepsTheWordsAndNothingElse) {
  const std::pair<const char*, const char*> cases[] = {
      {"one\ntwo", "one\ntwo"},
      {"<h2>New</h2><ul><li>a</li><li>b &amp; c</li></ul>", "New\n\n\u2022 a\n\n\u2022 b & c"},
      {"a<br/>b<p>c</p>", "a\nb\nc"},
      {"<img src='https://updates.example/x.png'>seen", "seen"},
      {"&lt;b&gt; &amp;lt;", "<b> &lt;"},
      {"1 < 2", "1 < 2"},
      {"a\x1b[31m\tb  c", "a[31m b c"},
      {"a\n\n\n\n\nb", "a\n\nb"},
  };
  for (const auto& [description, notes] : cases)
    EXPECT_EQ(plainNotes(QString::fromUtf8(description)).toStdString(), notes) << description;
  EXPECT_EQ(plainNotes(QString(60'000, 'x')).size(), 16'384);
}

TEST(Installation, isAFileOfTheUsersOrAPackage) {
  const desktop::TemporaryFolder folder;
  const std::filesystem::path program = folder.writeProgram("bin/sonvel");
  const std::filesystem::path image = folder.writeProgram("Sonvel.AppImage");
  const std::filesystem::path mounted = folder.writeProgram("mount/usr/bin/sonvel");
  const std::filesystem::path mount = folder.path("mount");

  struct Case {
    const char* name;
    InstallationFacts facts;
    Installation::Kind kind;
    std::filesystem::path program;
  };

  const Case cases[] = {
      {"own file", {.executable = program}, Installation::Kind::singleFile, program},
      {"image", {mounted, image, mount}, Installation::Kind::singleFile, image},
      {"another's image", {program, image, mount}, Installation::Kind::singleFile, program},
      {"packaged", {.executable = "/usr/bin/env"}, Installation::Kind::package, "/usr/bin/env"},
      {"gone", {.executable = folder.path("gone")}, Installation::Kind::package, folder.path("gone")},
  };
  for (const Case& one : cases) {
    const Installation found = installationOf(one.facts);
    EXPECT_EQ(found.kind, one.kind) << one.name;
    EXPECT_EQ(found.program, std::filesystem::weakly_canonical(one.program)) << one.name;
  }
}

/// A world whose updater starts again and again, as the program does.
class RestartingUpdater : public testing::Test {
 protected:
  void start() {
    UpdaterEnvironment environment = world_.environment();
    environment.calendarTime = [this] { return calendarTime_; };
    updater_.reset();
    updater_ = std::make_unique<AppcastUpdater>(
        environment, UpdateSource{world_.feedURL().toString().toStdString(), world_.key.publicKey()},
        std::weak_ptr<const UpdaterDelegate>(), MakeUpdateSurface());
  }

  /// Lets model time pass, hour by hour, and any check that comes up end.
  void pass(std::chrono::hours time) {
    for (; time.count() > 0; --time) {
      calendarTime_ += std::chrono::hours(1);
      world_.clock.advance(std::chrono::hours(1));
      QCoreApplication::processEvents();
      ASSERT_TRUE(waitUntil([&] { return updater_->cycle().state().stage != UpdateStage::checking; }));
    }
  }

  int checks() const { return world_.server().requestCount("/appcast.xml"); }

  mutable UpdaterWorld world_{std::nullopt};
  std::chrono::system_clock::time_point calendarTime_{std::chrono::hours(500'000)};
  std::unique_ptr<AppcastUpdater> updater_;
};

TEST_F(RestartingUpdater, checksOnceADayOverAllStarts) {
  world_.serveFeed(UpdaterWorld::feedOf({}));
  start();
  EXPECT_EQ(checks(), 0);
  pass(std::chrono::hours(1));
  EXPECT_EQ(checks(), 1);
  pass(std::chrono::hours(20));
  start();
  pass(std::chrono::hours(2));
  EXPECT_EQ(checks(), 1) << "the day isn't over";
  pass(std::chrono::hours(2));
  EXPECT_EQ(checks(), 2);

  calendarTime_ += std::chrono::hours(30); // the computer slept
  pass(std::chrono::hours(1));
  EXPECT_EQ(checks(), 3);
  calendarTime_ -= std::chrono::hours(1'000); // somebody set the clock back
  pass(std::chrono::hours(2));
  EXPECT_EQ(checks(), 4);

  world_.serveFeed("no feed");
  pass(std::chrono::hours(24 + 3));
  EXPECT_GE(checks(), 7) << "a day without an answer is no day";
}

TEST_F(RestartingUpdater, forgetsTheOldProgramAndLeftoversWhenItStarts) {
  world_.advanceTo(UpdateStage::installing);
  ASSERT_TRUE(world_.waitFor(UpdateStage::restarting));
  EXPECT_THAT(world_.programFolder(), testing::ElementsAre(".program.previous", "program"));
  world_.folder.write("downloads/download-abc/update", "cut off");
  world_.folder.write("bin/.program.update", "cut off");
  start();
  EXPECT_THAT(world_.programFolder(), testing::ElementsAre("program"));
  EXPECT_EQ(world_.installedProgram(), world_.newFile);
  EXPECT_THAT(world_.downloads(), testing::IsEmpty());
}

TEST(Relaunch, fallsBackToTheProgramOfBefore) {
  const desktop::TemporaryFolder folder;
  const std::string started = folder.path("started");
  const auto script = [&](const std::string& interpreter) {
    return "#!" + interpreter + "\necho old >" + started + ".new && mv " + started + ".new " + started + "\n";
  };
  const std::filesystem::path program = folder.writeProgram("program", script("/nowhere/sh"));
  Relaunch relaunch;
  EXPECT_FALSE(relaunch.perform()) << "nothing was requested";
  relaunch.request(program);
  EXPECT_FALSE(relaunch.perform()) << "there is nothing to go back to";

  folder.writeProgram(".program.previous", script("/bin/sh"));
  EXPECT_TRUE(relaunch.perform());
  EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(started); }));
  EXPECT_FALSE(std::filesystem::exists(previousProgram(program)));
}

} // namespace
} // namespace sonvel::updater
