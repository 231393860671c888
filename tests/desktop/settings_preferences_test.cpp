#include "desktop/settings_preferences.h"
#include "desktop/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sonvel::desktop {

namespace {

namespace fs = std::filesystem;

constexpr auto kKey = "onboarded.v1";
constexpr auto kOtherKey = "seen";

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Whether `isSo` in another process, whose environment it may change.
template <class Condition> bool holdsElsewhere(Condition isSo) {
  const pid_t child = fork();
  if (child == 0) _exit(isSo() ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// No file of this process can grow beyond so many bytes while this lives, as on a disk that is full.
class FullDisk {
 public:
  explicit FullDisk(rlim_t sizeBytes)
      : handlerBefore_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{.rlim_cur = sizeBytes, .rlim_max = before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }

  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handlerBefore_);
  }

  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before_{};
  sighandler_t handlerBefore_;
};

} // namespace

TEST(SettingsPreferences, WhatIsStoredIsOnDiskForEveryone) {
  const TemporaryFolder folder;
  SettingsPreferences preferences(folder.path("new/folder/sonvel.conf"));
  EXPECT_FALSE(preferences.boolForKey(kKey));
  EXPECT_FALSE(fs::exists(folder.path("new"))); // looking changes nothing
  EXPECT_TRUE(preferences.setBool(true, kKey));
  EXPECT_FALSE(preferences.boolForKey(kOtherKey));
  EXPECT_NE(contentsOf(preferences.file()).find("onboarded.v1=true"), std::string::npos);

  SettingsPreferences another(preferences.file());
  EXPECT_TRUE(another.boolForKey(kKey));
  EXPECT_TRUE(another.setBool(false, kKey));
  EXPECT_TRUE(another.setBool(true, kOtherKey));
  EXPECT_FALSE(preferences.boolForKey(kKey));
  EXPECT_TRUE(preferences.boolForKey(kOtherKey));
}

TEST(SettingsPreferences, WhatIsThereAlreadyIsNotWrittenAgain) {
  const TemporaryFolder folder;
  const std::string handWritten = "# mine\n[Preferences]\n onboarded.v1 = true\nseen=one\n";
  SettingsPreferences preferences(folder.write("sonvel.conf", handWritten));
  EXPECT_TRUE(preferences.setBool(true, kKey));
  EXPECT_TRUE(preferences.setString("one", kOtherKey));
  EXPECT_EQ(contentsOf(preferences.file()), handWritten);
  EXPECT_TRUE(preferences.setBool(false, kKey));
  EXPECT_TRUE(preferences.setString("two", kOtherKey));
  EXPECT_FALSE(preferences.boolForKey(kKey));
  EXPECT_EQ(preferences.stringForKey(kOtherKey), "two");
}

TEST(SettingsPreferences, TextsComeBackAsTheyWere) {
  const TemporaryFolder folder;
  SettingsPreferences preferences(folder.path("sonvel.conf"));
  EXPECT_EQ(preferences.stringForKey(kKey), std::nullopt);
  for (const std::string value : {"", "1800000000", " blanks ", "a=b;c\\n", "two\nlines", "\u00fc"}) {
    EXPECT_TRUE(preferences.setString(value, kKey));
    EXPECT_TRUE(preferences.setBool(true, kOtherKey));
    EXPECT_EQ(SettingsPreferences(preferences.file()).stringForKey(kKey), value);
  }
}

TEST(SettingsPreferences, AreInTheUsersConfigurationFolder) {
  const TemporaryFolder folder;
  EXPECT_TRUE(holdsElsewhere([&] {
    setenv("XDG_CONFIG_HOME", folder.path("config").c_str(), 1);
    return SettingsPreferences().setBool(true, kKey);
  }));
  EXPECT_TRUE(SettingsPreferences(folder.path("config/sonvel/sonvel.conf")).boolForKey(kKey));
}

TEST(SettingsPreferences, DamagedFileReadsFalseAndIsKeptWhenSomethingIsStored) {
  const TemporaryFolder folder;
  const std::string line = "onboarded.v1=true\n";
  for (const std::string& damaged :
       {"[Preferences]\n" + line + "no value in this line\n", "[Preferences\n" + line, line,
        "[Preferences]\n" + line + std::string(3, '\0'), std::string("\0\0\xff\x01", 4)}) {
    SCOPED_TRACE(damaged);
    SettingsPreferences preferences(folder.write("sonvel.conf", damaged));
    EXPECT_FALSE(preferences.boolForKey(kKey));
    EXPECT_EQ(contentsOf(preferences.file()), damaged);
    EXPECT_TRUE(preferences.setBool(true, kOtherKey));
    EXPECT_TRUE(preferences.boolForKey(kOtherKey));
    EXPECT_FALSE(preferences.boolForKey(kKey));
    EXPECT_EQ(contentsOf(preferences.file().string() + ".damaged"), damaged);
  }
}

TEST(SettingsPreferences, OnlyTrueIsTrue) {
  const TemporaryFolder folder;
  for (const std::string value : {"", "false", "banana", "truetrue", "\xff"}) {
    const SettingsPreferences preferences(
        folder.write("sonvel.conf", "[Preferences]\nonboarded.v1=" + value + "\n"));
    EXPECT_FALSE(preferences.boolForKey(kKey)) << value;
  }
}

TEST(SettingsPreferences, WhatElseStandsThereStays) {
  const TemporaryFolder folder;
  folder.write("elsewhere", "# mine\n[Preferences]\nseen=true\n[Other]\nx=1\n");
  fs::create_symlink(folder.path("elsewhere"), folder.path("sonvel.conf"));
  SettingsPreferences preferences(folder.path("sonvel.conf"));
  EXPECT_TRUE(preferences.setBool(true, kKey));
  EXPECT_TRUE(preferences.boolForKey(kOtherKey));
  EXPECT_TRUE(fs::is_symlink(preferences.file()));
  const std::string text = contentsOf(folder.path("elsewhere"));
  for (const auto* kept : {"# mine", "[Other]", "x=1", "onboarded.v1=true"})
    EXPECT_NE(text.find(kept), std::string::npos) << kept;
}

TEST(SettingsPreferences, WhatCantBeStoredIsNotRemembered) {
  const TemporaryFolder folder;
  fs::create_directories(folder.path("taken/sonvel.conf")); // a folder in its place
  folder.write("file", "");                                 // a file in the place of its folder
  for (const auto* path : {"taken/sonvel.conf", "file/sonvel.conf"}) {
    SCOPED_TRACE(path);
    SettingsPreferences preferences(folder.path(path));
    EXPECT_FALSE(preferences.boolForKey(kKey));
    EXPECT_FALSE(preferences.setBool(true, kKey));
    EXPECT_FALSE(preferences.boolForKey(kKey));
  }
  EXPECT_TRUE(fs::is_directory(folder.path("taken/sonvel.conf")));
}

TEST(SettingsPreferences, FullDiskLeavesTheFileAsItWas) {
  const TemporaryFolder folder;
  const std::string before = "[Preferences]\nonboarded.v1=false\nlong=" + std::string(5000, 'x') + "\n";
  SettingsPreferences preferences(folder.write("sonvel.conf", before));
  {
    const FullDisk disk(2000); // a part of the file can be written
    EXPECT_FALSE(preferences.setBool(true, kKey));
  }
  EXPECT_TRUE(contentsOf(preferences.file()) == before);
  EXPECT_FALSE(preferences.boolForKey(kKey));
  EXPECT_TRUE(preferences.setBool(true, kKey)); // there is room again
  EXPECT_TRUE(preferences.boolForKey(kKey));
}

} // namespace sonvel::desktop
