#include "desktop/desktop_application_icons.h"
#include "desktop/desktop_entries.h"
#include "simulated/desktop.h"
#include "ui/icons/app_icon_provider.h"
#include "ui/icons/colored_icons.h"
#include "ui/icons/icon_themes.h"

#include <gtest/gtest.h>

namespace sonvel {
namespace {

constexpr auto kIndex = "[Icon Theme]\nName=Test\nDirectories=16x16/apps,64x64/apps\n"
                        "[16x16/apps]\nSize=16\nType=Fixed\n[64x64/apps]\nSize=64\nType=Fixed\n";

/// The folders of a user who has an application with an icon, and a theme with a generic one.
class IconThemes : public testing::Test {
 protected:
  IconThemes() {
    const auto& folder = pictures_.folder();
    qputenv("XDG_DATA_HOME", folder.path().c_str());
    qputenv("XDG_DATA_DIRS", folder.path("system").c_str());
    folder.write("applications/org.example.Player.desktop",
                 "[Desktop Entry]\nType=Application\nName=Player\nExec=/bin/sh\nIcon=the-player\n");
    folder.write("icons/hicolor/index.theme", kIndex);
    pictures_.write("icons/hicolor/16x16/apps/the-player.png", "#ff0000", {16, 16});
    pictures_.write("icons/hicolor/64x64/apps/the-player.png", "#00ff00", {64, 64});
    folder.write("system/icons/Adwaita/index.theme", kIndex);
    pictures_.write("system/icons/Adwaita/16x16/apps/application-x-executable.png", "#0000ff", {16, 16});
  }

  const ColoredIcons pictures_;
};

TEST_F(IconThemes, GiveAnInstalledApplicationItsIconInTheBestSizeAndOthersTheGenericOne) {
  const desktop::InstalledDesktopEntries entries(
      {.applications = {pictures_.folder().path("applications")}, .programs = {}});
  const desktop::DesktopApplicationIcons icons(entries);
  const simulated::SimulatedApplications running;
  ASSERT_EQ(colorOf(AppIconCache(running, icons).icon("org.example.Player", {}, 1)), "none")
      << "Qt finds the themes without help here";

  for (const auto* theme : {"", "hicolor"}) { // without and with a desktop that Qt knows
    SCOPED_TRACE(theme);
    QIcon::setThemeName(theme);
    completeIconThemes();
    AppIconCache cache(running, icons);
    AppIconProvider provider(cache);
    const auto color = [&](const char* id, int side) {
      return provider.requestImage(id, nullptr, QSize(side, side)).pixelColor(side / 2, side / 2).name();
    };
    EXPECT_EQ(color("1/org.example.Player//0", 16), "#ff0000");
    EXPECT_EQ(color("1/org.example.Player//0", 64), "#00ff00");
    EXPECT_EQ(color("1/org.example.Player//0", 20), "#00ff00") << "the smaller one is nearer, but blurred";
    EXPECT_EQ(color("1/org.example.Player//0", 128), "#00ff00");
    EXPECT_EQ(color("2/unknown//0", 16), "#0000ff");
  }
}

} // namespace
} // namespace sonvel
