#include "desktop/temporary_folder.h"
#include "updater/feed_text.h"
#include "updater/installation.h"
#include "updater/relaunch.h"
#include "updater/update_choice.h"

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
  for (const QString& text : {QString(), QStringLiteral("beta"), QStringLiteral("-1"),
                              QStringLiteral("1.1 a"), QStringLiteral("1.1\u202E"), QString(65, '1')})
    EXPECT_EQ(ProgramVersion::parse(text), std::nullopt) << text.toStdString();
}

TEST(FeedText, keepsTheWordsAndNothingElse) {
  for (const auto& [description, notes] :
       {std::pair{"<h2>New</h2><ul><li>a</li><li>b &amp; c</li></ul>", "New\n\n\u2022 a\n\n\u2022 b & c"},
        {"<img src='https://updates.example/x.png'>seen", "seen"},
        {"&lt;b&gt; &amp;lt; 1 < 2", "<b> &lt; 1 < 2"},
        {"a\x1b[31m\tb  c\n\n\n\nd", "a[31m b c\n\nd"},
        {"\u202Ea\u2066b\u200Fc\uFEFF\u2028d\u0085e", "abc\nde"},
        {"\U0001F469\u200D\U0001F4BB", "\U0001F469\u200D\U0001F4BB"}})
    EXPECT_EQ(plainNotes(QString::fromUtf8(description)).toStdString(), notes) << description;
  EXPECT_EQ(plainNotes(QString(60'000, 'x')).size(), 16'384);
  EXPECT_EQ(plainLine(QStringLiteral("a\U0001F469"), 2), QStringLiteral("a")) << "no half characters";
}

TEST(Installation, isReplacedOnlyWhereItIsOneFileOfTheUsersOwn) {
  const desktop::TemporaryFolder folder;
  const std::filesystem::path program = folder.writeProgram("bin/sonvel");
  const std::filesystem::path image = folder.writeProgram("Sonvel.AppImage");
  const std::filesystem::path mounted = folder.writeProgram("mount/usr/bin/sonvel");
  const std::filesystem::path mount = folder.path("mount");
  const std::filesystem::path ofTwo = folder.writeProgram("prefix/bin/sonvel");
  folder.writeProgram("prefix/libexec/sonvel/sonvel-guardian");
  const std::filesystem::path shared = folder.writeProgram("shared/sonvel");
  std::filesystem::permissions(shared.parent_path(), std::filesystem::perms::all);
  const uid_t own = ::geteuid();
  const auto replaced = [](const InstallationFacts& facts) -> std::filesystem::path {
    const Installation found = installationOf(facts);
    return found.kind == Installation::Kind::singleFile ? found.program : "";
  };
  EXPECT_EQ(replaced({program, {}, {}, true, own}), program);
  EXPECT_EQ(replaced({mounted, image, mount, false, own}), image);
  EXPECT_EQ(replaced({program, image, mount, false, own}), "") << "the image of another program";
  EXPECT_EQ(replaced({program, {}, {}, false, own}), "") << "not marked";
  EXPECT_EQ(replaced({program, {}, {}, true, own + 1}), "") << "of another user";
  EXPECT_EQ(replaced({"/etc/passwd", {}, {}, true, 0}), "") << "root's, but others can reach it";
  for (const std::filesystem::path& file :
       {ofTwo, shared, std::filesystem::path("/usr/bin/env"), mount / "none"})
    EXPECT_EQ(replaced({file, {}, {}, true, own}), "") << file;
}

TEST(EnvironmentOutsideImage, hasNothingOfTheMountLeft) {
  QProcessEnvironment inside;
  for (const auto& [name, value] : {std::pair{"APPDIR", "/tmp/.mount_a"},
                                    {"APPIMAGE", "/home/x/a"},
                                    {"OWD", "/home"},
                                    {"ARGV0", "a"},
                                    {"LD_LIBRARY_PATH", "/tmp/.mount_a/lib:/opt/lib::"},
                                    {"QT_PLUGIN_PATH", "/tmp/.mount_a/plugins"}})
    inside.insert(QLatin1String(name), QLatin1String(value));
  EXPECT_EQ(environmentOutsideImage(inside).toStringList(), QStringList("LD_LIBRARY_PATH=/opt/lib"));
}

TEST(Relaunch, goesBackToTheProgramOfBeforeIfTheNewOneCannotStart) {
  const desktop::TemporaryFolder folder;
  const std::filesystem::path program = folder.writeProgram("program", "#!/nowhere/sh\n");
  Relaunch relaunch;
  EXPECT_FALSE(relaunch.perform()) << "nothing was requested";
  relaunch.request(program);
  EXPECT_FALSE(relaunch.perform()) << "there is nothing to go back to";
  folder.writeProgram(".program.previous", "#!/bin/true\n");
  EXPECT_TRUE(relaunch.perform());
  EXPECT_FALSE(std::filesystem::exists(previousProgram(program)));
  qputenv("SONVEL_UPDATE_UNDONE", "died");
  EXPECT_EQ(takeReasonOfReturn(), UpdateFailure::newVersionDied);
  EXPECT_EQ(takeReasonOfReturn(), std::nullopt) << "it is told once";
}

} // namespace
} // namespace sonvel::updater
