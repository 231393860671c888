#include "desktop/desktop_application_icons.h"
#include "desktop/desktop_entries.h"
#include "desktop/temporary_folder.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace sonvel::desktop {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

std::string entryText(const std::string& name, const std::string& exec, const std::string& more = {}) {
  return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + exec + "\n" + more;
}

class DesktopEntriesTest : public testing::Test {
 protected:
  /// Sets old time stamps, because recent ones could hide a change.
  void settle() const {
    const auto earlier = fs::file_time_type::clock::now() - std::chrono::hours(1);
    for (const char* name : {"user", "user/sub", "bin"})
      fs::last_write_time(folder_.path(name), earlier);
  }

  TemporaryFolder folder_;
  std::string program_ = folder_.writeProgram("bin/player");
  InstalledDesktopEntries entries_{{.applications = {folder_.path("user"), folder_.path("system")},
                                    .programs = {folder_.path("missing"), folder_.path("bin")}}};
};

TEST_F(DesktopEntriesTest, AreTheUsersFirst) {
  folder_.write("user/player.desktop", entryText("Mine", program_ + " --menu %U", "Icon=player.png\n"));
  folder_.write("system/player.desktop", entryText("Everyone's", program_));
  folder_.write("user/hidden.desktop", entryText("Hidden", program_, "Hidden=true\n"));
  folder_.write("system/hidden.desktop", entryText("Shown", program_));
  folder_.write("system/sub/tool.desktop",
                entryText("Tool", program_, "NoDisplay=true\nIcon=/opt/a tool/icon.svg\n"));
  folder_.write("system/term.desktop",
                entryText("Term", program_, "Categories=Utility;TerminalEmulator;System;\n"));
  folder_.write("system/link.desktop", "[Desktop Entry]\nType=Link\nName=Link\nURL=https://example.org\n");
  folder_.write("system/broken.desktop", "Name=Broken");
  folder_.write("system/lost.desktop", entryText("Lost", folder_.path("bin/lost")));
  ASSERT_EQ(mkfifo(folder_.path("system/pipe.desktop").c_str(), 0600), 0);

  const auto table = entries_.current();
  ASSERT_TRUE(table->find("player") && table->find("sub-tool") && table->find("term"));
  EXPECT_EQ(*table->find("player"),
            (DesktopEntry{.id = "player",
                          .name = "Mine",
                          .path = folder_.path("user/player.desktop"),
                          .launch = {.program = program_, .isScript = false, .arguments = {"--menu"}}}));
  EXPECT_FALSE(table->find("sub-tool")->isShown);
  EXPECT_TRUE(table->find("term")->isTerminalEmulator);
  const DesktopApplicationIcons icons(entries_);
  EXPECT_EQ(icons.iconForFile(folder_.path("user/player.desktop")), "player");
  EXPECT_EQ(icons.iconForFile(folder_.path("system/sub/tool.desktop")), "/opt/a tool/icon.svg");
  for (const char* id : {"hidden", "link", "broken", "lost", "pipe", "tool"})
    EXPECT_EQ(table->find(id), nullptr) << id;
}

TEST_F(DesktopEntriesTest, AreReadAgainOnlyAfterAChange) {
  fs::create_directories(folder_.path("user/sub"));
  settle();
  const auto before = entries_.current();
  EXPECT_EQ(entries_.current(), before);
  folder_.write("user/sub/later.desktop", entryText("Later", folder_.path("bin/later")));
  EXPECT_EQ(entries_.current()->find("sub-later"), nullptr) << "its program is not installed";
  settle();
  (void)entries_.current();
  folder_.writeProgram("bin/later");
  EXPECT_NE(entries_.current()->find("sub-later"), nullptr);

  const auto tick = fs::last_write_time(folder_.path("user"));
  folder_.write("user/second.desktop", entryText("Second", program_));
  fs::last_write_time(folder_.path("user"), tick); // within one kernel tick
  EXPECT_NE(entries_.current()->find("second"), nullptr);
}

TEST_F(DesktopEntriesTest, StartAProgramOrAScriptOrLeaveTheChoiceToOthers) {
  const auto script = folder_.writeProgram("bin/tunes", "#!/usr/bin/python3\n");
  for (const char* name : {"python3.11", "sh", "flatpak", "snap"})
    folder_.writeProgram("bin/" + std::string(name));
  fs::create_symlink(program_, folder_.path("bin/alias"));
  fs::create_symlink(folder_.path("bin/snap"), folder_.path("bin/boxed"));
  const auto started = [](const std::string& program, Words arguments = {}) {
    return LaunchCommand{.program = program, .isScript = false, .arguments = std::move(arguments)};
  };
  const LaunchCommand startedScript{.program = script, .isScript = true, .arguments = {}};
  const std::pair<std::string, LaunchCommand> cases[] = {
      {"alias %U", started(program_)},
      {"env A=1 B='x y' " + program_ + " %f", started(program_)},
      {"\"" + program_ + "\" @@u %U @@", started(program_)},
      {"player --title=100%% -x 'a b' --icon=%i", started(program_, {"--title=100%%", "-x", "a b"})},
      {"env X=1 python3.11 -u " + script, startedScript},
      {"", {}},
      {"python3.11 -m player", {}},
      {"boxed", {}},
      {"flatpak run org.example.Player", {}},
      {"sh -c " + program_, {}}};
  for (const auto& [line, expected] : cases)
    EXPECT_EQ(parseLaunchCommand(line, Words{folder_.path("bin")}), expected) << line;
}

} // namespace
} // namespace sonvel::desktop
