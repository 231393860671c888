#include "desktop/settings_preferences.h"
#include "desktop/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>

namespace sonvel::desktop {

namespace {

namespace fs = std::filesystem;

constexpr auto kKey = "onboarded.v1";
constexpr auto kOtherKey = "seen";

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
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

TEST(SettingsPreferences, KeepEveryValueInTheUsersFolder) {
  const TemporaryFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path("config").c_str(), 1);
  SettingsPreferences preferences;
  unsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(preferences.file(), folder.path("config/sonvel/sonvel.conf"));
  EXPECT_FALSE(preferences.boolForKey(kKey));
  EXPECT_EQ(preferences.stringForKey(kKey), std::nullopt);
  EXPECT_FALSE(fs::exists(folder.path("config"))) << "reading changed something";
  for (const std::string value : {"", " blanks ", "a=b;c\\n", "two\nlines", "\u00fc"}) {
    EXPECT_TRUE(preferences.setString(value, kKey));
    EXPECT_TRUE(preferences.setBool(true, kOtherKey));
    const SettingsPreferences another(preferences.file());
    EXPECT_EQ(another.stringForKey(kKey), value);
    EXPECT_TRUE(another.boolForKey(kOtherKey));
  }
  for (const std::string value : {"", "false", "banana", "truetrue"}) {
    EXPECT_TRUE(preferences.setString(value, kKey));
    EXPECT_FALSE(preferences.boolForKey(kKey)) << value;
  }
}

TEST(SettingsPreferences, LeaveTheRestOfTheFileAsItWas) {
  const TemporaryFolder folder;
  const std::string handWritten = "# mine\n[Preferences]\n onboarded.v1 = true\nseen=one\n[Other]\nx=1\n";
  folder.write("elsewhere", handWritten);
  fs::create_symlink(folder.path("elsewhere"), folder.path("sonvel.conf"));
  SettingsPreferences preferences(folder.path("sonvel.conf"));
  EXPECT_TRUE(preferences.setBool(true, kKey));
  EXPECT_EQ(contentsOf(folder.path("elsewhere")), handWritten) << "what is there already was written again";
  EXPECT_TRUE(preferences.setBool(false, kKey));
  EXPECT_TRUE(fs::is_symlink(preferences.file()));
  const std::string text = contentsOf(folder.path("elsewhere"));
  for (const auto* kept : {"# mine", "[Other]", "x=1", "seen=one"})
    EXPECT_NE(text.find(kept), std::string::npos) << kept;
}

TEST(SettingsPreferences, KeepADamagedFileBesideTheNewOne) {
  const TemporaryFolder folder;
  const std::string line = "onboarded.v1=true\n";
  for (const std::string& damaged :
       {"[Preferences]\n" + line + "no value\n", line, "[Preferences]\n" + line + std::string(3, '\0'),
        "[Preferences]\n" + line + "long=" + std::string(1100000, 'x') + "\n"}) {
    SettingsPreferences preferences(folder.write("sonvel.conf", damaged));
    EXPECT_FALSE(preferences.boolForKey(kKey));
    EXPECT_TRUE(contentsOf(preferences.file()) == damaged);
    EXPECT_TRUE(preferences.setBool(true, kOtherKey));
    EXPECT_TRUE(preferences.boolForKey(kOtherKey));
    EXPECT_TRUE(contentsOf(preferences.file().string() + ".damaged") == damaged);
  }
}

TEST(SettingsPreferences, RememberNothingThatCannotBeStored) {
  const TemporaryFolder folder;
  fs::create_directories(folder.path("taken/sonvel.conf")); // a folder in its place
  folder.write("file", "");                                 // a file in the place of its folder
  for (const auto* path : {"taken/sonvel.conf", "file/sonvel.conf"}) {
    SettingsPreferences preferences(folder.path(path));
    EXPECT_FALSE(preferences.setBool(true, kKey)) << path;
    EXPECT_FALSE(preferences.boolForKey(kKey)) << path;
  }
  const std::string before = "[Preferences]\nonboarded.v1=false\nlong=" + std::string(5000, 'x') + "\n";
  SettingsPreferences preferences(folder.write("sonvel.conf", before));
  {
    const FullDisk disk(2000); // a part of the file can be written
    EXPECT_FALSE(preferences.setBool(true, kKey));
  }
  EXPECT_TRUE(contentsOf(preferences.file()) == before);
  ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
  SettingsPreferences pipe(folder.path("pipe"));
  EXPECT_FALSE(pipe.boolForKey(kKey)); // and returns
  EXPECT_TRUE(pipe.setBool(true, kKey));
  EXPECT_TRUE(pipe.boolForKey(kKey));
}

} // namespace sonvel::desktop
