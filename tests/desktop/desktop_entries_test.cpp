#include "desktop/desktop_entries.h"
#include "desktop/temporary_folder.h"

#include <gmock/gmock.h>

#include <cstdlib>

namespace sonvel::desktop {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
namespace fs = std::filesystem;

std::string entryText(const std::string& name, const std::string& exec, const std::string& more = {}) {
  return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + exec + "\n" + more;
}

class DesktopEntriesTest : public testing::Test {
 protected:
  DesktopFolders folders() const {
    return {.applications = {folder_.path("user"), folder_.path("system")},
            .programs = {folder_.path("missing"), folder_.path("bin")}};
  }

  /// As if nothing had been changed for long: time stamps of a moment ago could hide a change.
  void settle() const {
    const auto earlier = fs::file_time_type::clock::now() - std::chrono::hours(1);
    for (const char* name : {"user", "user/sub", "system", "bin"})
      if (fs::exists(folder_.path(name))) fs::last_write_time(folder_.path(name), earlier);
  }

  TemporaryFolder folder_;
};

TEST_F(DesktopEntriesTest, ReadsWhatIsInstalled) {
  const auto program = folder_.writeProgram("bin/player");
  folder_.write("system/player.desktop", entryText("Player", program + " --menu %U"));
  folder_.write("system/sub/tool.desktop", entryText("Tool", program, "NoDisplay=true\n"));
  folder_.write("system/term.desktop",
                entryText("Term", program, "Categories=Utility;TerminalEmulator;System;\n"));
  folder_.write("system/readme.txt", entryText("No entry", program));
  folder_.write("system/link.desktop", "[Desktop Entry]\nType=Link\nName=Link\nURL=https://example.org\n");
  folder_.write("system/broken.desktop", "Name=Broken");
  folder_.write("system/lost.desktop", entryText("Lost", folder_.path("bin/lost")));

  const auto table = InstalledDesktopEntries(folders()).current();
  ASSERT_NE(table->find("player"), nullptr);
  EXPECT_EQ(*table->find("player"),
            (DesktopEntry{.id = "player",
                          .name = "Player",
                          .path = folder_.path("system/player.desktop"),
                          .launch = {.program = program, .isScript = false, .arguments = {"--menu"}}}));
  ASSERT_NE(table->find("sub-tool"), nullptr);
  EXPECT_FALSE(table->find("sub-tool")->isShown);
  ASSERT_NE(table->find("term"), nullptr);
  EXPECT_TRUE(table->find("term")->isTerminalEmulator);
  for (const char* id : {"readme", "link", "broken", "lost", "tool", "player.desktop", ""})
    EXPECT_EQ(table->find(id), nullptr) << id;
}

TEST_F(DesktopEntriesTest, TakesTheUsersEntriesFirstInTheUsersLanguage) {
  const auto program = folder_.writeProgram("bin/player");
  folder_.write("user/player.desktop", entryText("Mine", program, "Name[de]=Meins\nName[fr]=Le mien\n"));
  folder_.write("system/player.desktop", entryText("Everyone's", program));
  folder_.write("user/hidden.desktop", entryText("Hidden", program, "Hidden=true\n"));
  folder_.write("system/hidden.desktop", entryText("Shown", program));
  setenv("LANGUAGE", "fr:de", 1);
  const auto table = InstalledDesktopEntries(folders()).current();
  unsetenv("LANGUAGE");
  ASSERT_NE(table->find("player"), nullptr);
  EXPECT_EQ(table->find("player")->name, "Le mien");
  EXPECT_EQ(table->find("hidden"), nullptr);
}

TEST_F(DesktopEntriesTest, ReadsAgainOnlyAfterAChange) {
  const auto program = folder_.path("bin/player");
  folder_.writeProgram("bin/other");
  fs::create_directories(folder_.path("user/sub"));
  const InstalledDesktopEntries entries(folders());
  settle();
  const auto before = entries.current();
  EXPECT_EQ(entries.current(), before);
  folder_.write("user/sub/player.desktop", entryText("Player", program));
  EXPECT_EQ(entries.current()->find("sub-player"), nullptr) << "its program is not installed";
  settle();
  (void)entries.current();
  folder_.writeProgram("bin/player");
  EXPECT_NE(entries.current()->find("sub-player"), nullptr);

  const auto tick = fs::last_write_time(folder_.path("user"));
  folder_.write("user/second.desktop", entryText("Second", program));
  fs::last_write_time(folder_.path("user"), tick); // within one tick of the kernel
  settle();
  EXPECT_NE(entries.current()->find("second"), nullptr);
  fs::remove(folder_.path("user/sub/player.desktop"));
  EXPECT_EQ(entries.current()->find("sub-player"), nullptr);
  EXPECT_EQ(InstalledDesktopEntries(DesktopFolders{}).current()->find("second"), nullptr);
}

class LaunchCommandTest : public testing::Test {
 protected:
  LaunchCommandTest() {
    std::filesystem::create_directories(folder_.path("links"));
    std::filesystem::create_symlink(program_, folder_.path("links/alias"));
    std::filesystem::create_symlink(folder_.writeProgram("bin/snap"), folder_.path("links/boxed"));
    folder_.writeProgram("bin/python3.11");
    folder_.writeProgram("bin/sh");
    folder_.writeProgram("bin/flatpak");
  }

  LaunchCommand parse(const std::string& commandLine) const {
    return parseLaunchCommand(commandLine, std::vector{folder_.path("links"), folder_.path("bin")});
  }

  TemporaryFolder folder_;
  std::string program_ = folder_.writeProgram("bin/player");
  std::string script_ = folder_.writeProgram("bin/tunes", "#!/usr/bin/python3\n");
};

TEST_F(LaunchCommandTest, FindsTheProgram) {
  for (const auto& line : {program_, std::string("player"), std::string("alias %U"),
                           "env A=1 B='x y' " + program_ + " %f", "\"" + program_ + "\" @@u %U @@"}) {
    const auto launch = parse(line);
    EXPECT_THAT(launch.program, Optional(program_)) << line;
    EXPECT_FALSE(launch.isScript) << line;
    EXPECT_THAT(launch.arguments, IsEmpty()) << line;
  }
  EXPECT_THAT(parse("player --title=100%% -x 'a b' --icon=%i %U").arguments,
              ElementsAre("--title=100%%", "-x", "a b"));
}

TEST_F(LaunchCommandTest, FindsTheScript) {
  for (const auto& line : {std::string("tunes %U"), "python3.11 " + script_,
                           "env X=1 python3.11 -u " + script_, "sh " + script_}) {
    const auto launch = parse(line);
    EXPECT_THAT(launch.program, Optional(script_)) << line;
    EXPECT_TRUE(launch.isScript) << line;
  }
}

TEST_F(LaunchCommandTest, LeavesTheChoiceToOthers) {
  const std::vector<std::string> lines{"",
                                       "'unclosed",
                                       "env",
                                       "absent",
                                       "python3.11",
                                       "python3.11 -m player",
                                       "python3.11 /no/such/script",
                                       "boxed",
                                       "flatpak run org.example.Player",
                                       "sh -c " + program_};
  for (const auto& line : lines)
    EXPECT_EQ(parse(line), LaunchCommand{}) << line;
}

} // namespace
} // namespace sonvel::desktop
