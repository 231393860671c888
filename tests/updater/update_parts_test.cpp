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
  const std::pair<const char*, const char*> cases[] = {
      {"one\ntwo", "one\ntwo"},
      {"<h2>New</h2><ul><li>a</li><li>b &amp; c</li></ul>", "New\n\n\u2022 a\n\n\u2022 b & c"},
      {"a<br/>b<p>c</p>", "a\nb\nc"},
      {"<img src='https://updates.example/x.png'>seen", "seen"},
      {"&lt;b&gt; &amp;lt;", "<b> &lt;"},
      {"1 < 2", "1 < 2"},
      {"a\x1b[31m\tb  c", "a[31m b c"},
      {"a\n\n\n\n\nb", "a\n\nb"},
      {"\u202Ea\u2066b\u200Fc\uFEFF", "abc"},
      {"a\u2028b\u0085c", "a\nbc"},
      {"\U0001F469\u200D\U0001F4BB", "\U0001F469\u200D\U0001F4BB"},
  };
  for (const auto& [description, notes] : cases)
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
  folder.writeProgram("prefix/bin/sonvel-guardian");
  const std::filesystem::path shared = folder.writeProgram("shared/sonvel");
  std::filesystem::permissions(shared.parent_path(), std::filesystem::perms::all);
  const uid_t own = ::geteuid();
  using enum Installation::Kind;

  const struct {
    const char* name;
    InstallationFacts facts;
    Installation::Kind kind;
    std::filesystem::path program;
  } cases[] = {
      {"marked", {program, {}, {}, true, own}, singleFile, program},
      {"not marked", {program, {}, {}, false, own}, package, program},
      {"image", {mounted, image, mount, false, own}, singleFile, image},
      {"another's image", {program, image, mount, false, own}, package, program},
      {"of two files", {ofTwo, {}, {}, true, own}, package, ofTwo},
      {"in a folder of all", {shared, {}, {}, true, own}, package, shared},
      {"another user's", {program, {}, {}, true, own + 1}, package, program},
      {"packaged", {"/usr/bin/env", {}, {}, true, own}, package, "/usr/bin/env"},
      {"root's for all", {"/etc/passwd", {}, {}, true, 0}, package, "/etc/passwd"},
      {"gone", {folder.path("gone"), {}, {}, true, own}, package, folder.path("gone")},
  };

  for (const auto& one : cases) {
    const Installation found = installationOf(one.facts);
    EXPECT_EQ(found.kind, one.kind) << one.name;
    EXPECT_EQ(found.program, std::filesystem::weakly_canonical(one.program)) << one.name;
  }
}

TEST(EnvironmentOutsideImage, hasNothingOfTheMountLeft) {
  QProcessEnvironment inside;
  for (const auto& [name, value] : {std::pair{"APPDIR", "/tmp/.mount_a"},
                                    {"APPIMAGE", "/home/x/a"},
                                    {"OWD", "/home"},
                                    {"ARGV0", "a"},
                                    {"LD_LIBRARY_PATH", "/tmp/.mount_a/lib:/opt/lib::"},
                                    {"QT_PLUGIN_PATH", "/tmp/.mount_a/plugins"},
                                    {"HOME", "/home/x"}})
    inside.insert(QLatin1String(name), QLatin1String(value));
  QStringList outside = environmentOutsideImage(inside).toStringList();
  outside.sort();
  EXPECT_EQ(outside, QStringList({"HOME=/home/x", "LD_LIBRARY_PATH=/opt/lib"}));
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
}

} // namespace
} // namespace sonvel::updater
