#include "desktop/desktop_application_icons.h"
#include "desktop/desktop_entries.h"
#include "desktop/temporary_folder.h"

#include <gtest/gtest.h>

namespace sonvel::desktop {
namespace {

class DesktopApplicationIconsTest : public testing::Test {
 protected:
  /// Returns the entry's path.
  std::string install(const std::string& relative, const std::string& lines) {
    return folder_.write("applications/" + relative,
                         "[Desktop Entry]\nType=Application\nName=Player\nExec=/bin/sh %U\n" + lines);
  }

  const TemporaryFolder folder_;
  const InstalledDesktopEntries entries_{{.applications = {folder_.path("applications")}, .programs = {}}};
  const DesktopApplicationIcons icons_{entries_};
};

TEST_F(DesktopApplicationIconsTest, AreNamedAsInTheEntry) {
  const struct {
    const char* lines;
    std::optional<std::string> icon;
  } cases[] = {
      {"Icon=org.example.Player\n", "org.example.Player"},
      {"Icon=player.png\n", "player"},
      {"Icon=/opt/player/icon.png\n", "/opt/player/icon.png"},
      {"Icon=/opt/the player/icon.svg\nNoDisplay=true\n", "/opt/the player/icon.svg"},
      {"Icon=\n", std::nullopt},
      {"", std::nullopt},
  };

  int number = 0;
  for (const auto& [lines, icon] : cases) {
    SCOPED_TRACE(lines);
    const auto id = "org.example.player" + std::to_string(number++);
    const auto path = install(id + ".desktop", lines);
    ASSERT_EQ(icons_.locationOfApplication(id), path);
    EXPECT_EQ(icons_.iconForFile(path), icon);
    EXPECT_EQ(icons_.iconOfRunningApplication({.processID = 0, .bundleIdentifier = id}), icon);
  }
}

TEST_F(DesktopApplicationIconsTest, AreNoneWhereNoApplicationIs) {
  const auto hidden = install("gone.desktop", "Icon=gone\nHidden=true\n");
  const auto text = folder_.write("notes.txt", "Icon=notes\n");
  for (const auto* id : {"gone", "never.installed", ""}) {
    EXPECT_EQ(icons_.locationOfApplication(id), std::nullopt) << id;
    EXPECT_EQ(icons_.iconOfRunningApplication({.processID = 7, .bundleIdentifier = id}), std::nullopt) << id;
  }
  EXPECT_EQ(icons_.iconOfRunningApplication({.processID = 7}), std::nullopt);
  EXPECT_EQ(icons_.iconForFile(text), std::nullopt);
  EXPECT_EQ(icons_.iconForFile(folder_.path("nothing.desktop")), std::nullopt);
}

TEST_F(DesktopApplicationIconsTest, LieInFoldersBelowTheApplications) {
  const auto path = install("kde/player.desktop", "Icon=kde-icon\n");
  EXPECT_EQ(icons_.locationOfApplication("kde-player"), path);
}

} // namespace
} // namespace sonvel::desktop
