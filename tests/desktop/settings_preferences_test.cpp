#include "desktop/settings_preferences.h"
#include "desktop/temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace sonvel::desktop {

namespace {

namespace fs = std::filesystem;

constexpr auto kKey = "onboarded.v1";
constexpr auto kOtherKey = "seen";

std::string contentsOf(const std::string& path) {
  std::ostringstream contents;
  contents << std::ifstream(path, std::ios::binary).rdbuf();
  return contents.str();
}

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
  EXPECT_TRUE(preferences.setBool(true, kOtherKey));
  for (const std::string value : {"", " blanks ", "a=b;c\\n", "two\nlines", "\u00fc", "truetrue"}) {
    EXPECT_TRUE(preferences.setString(value, kKey));
    const SettingsPreferences another(preferences.file());
    EXPECT_EQ(another.stringForKey(kKey), value);
    EXPECT_FALSE(another.boolForKey(kKey)) << value;
    EXPECT_TRUE(another.boolForKey(kOtherKey));
  }
}

TEST(SettingsPreferences, LeaveTheRestOfTheFileAsItWas) {
  const TemporaryFolder folder;
  const std::string handWritten = "# mine\n[Preferences]\n onboarded.v1 = true\nseen=one\n[Other]\nx=1\n";
  const auto file = folder.write("elsewhere", handWritten);
  fs::create_symlink(file, folder.path("sonvel.conf"));
  SettingsPreferences preferences(folder.path("sonvel.conf"));
  EXPECT_TRUE(preferences.setBool(true, kKey));
  EXPECT_EQ(contentsOf(file), handWritten) << "what is there already was written again";
  EXPECT_TRUE(preferences.setBool(false, kKey));
  EXPECT_TRUE(fs::is_symlink(preferences.file()));
  for (const auto* kept : {"# mine", "[Other]", "x=1", "seen=one"})
    EXPECT_NE(contentsOf(file).find(kept), std::string::npos) << kept;
}

TEST(SettingsPreferences, KeepADamagedFileBesideTheNewOne) {
  const TemporaryFolder folder;
  const std::string start = "[Preferences]\nonboarded.v1=true\n";
  for (const std::string& damaged :
       {start + "no value\n", start + std::string(3, '\0'), start + "long=" + std::string(1100000, 'x')}) {
    SettingsPreferences preferences(folder.write("sonvel.conf", damaged));
    EXPECT_FALSE(preferences.boolForKey(kKey));
    EXPECT_TRUE(preferences.setBool(true, kOtherKey));
    EXPECT_TRUE(preferences.boolForKey(kOtherKey));
    EXPECT_TRUE(contentsOf(preferences.file().string() + ".damaged") == damaged);
  }
}

} // namespace sonvel::desktop
