#include "desktop/desktop_application_icons.h"
#include "desktop/desktop_entries.h"
#include "desktop/temporary_folder.h"
#include "simulated/application_icons.h"
#include "simulated/desktop.h"
#include "ui/icons/app_icon_provider.h"
#include "ui/icons/icon_themes.h"

#include <gtest/gtest.h>

#include <QIcon>
#include <QImage>
#include <sys/stat.h>

namespace sonvel {
namespace {

/// One-coloured pictures tell where an icon came from.
class AppIconsTest : public testing::Test {
 protected:
  std::string picture(const char* color, std::string file = {}, QSize size = {32, 32}) const {
    if (file.empty()) file = std::string(color) + ".png";
    const auto path = folder_.write(file, "");
    QImage image(size, QImage::Format_ARGB32);
    image.fill(QColor(color));
    EXPECT_TRUE(image.save(QString::fromStdString(path), "PNG"));
    return path;
  }

  void makePipe(const std::string& file) const {
    std::filesystem::create_directories(std::filesystem::path(folder_.path(file)).parent_path());
    EXPECT_EQ(mkfifo(folder_.path(file).c_str(), 0600), 0);
  }

  static std::string colorOf(const QImage& image) {
    return image.isNull() ? "none" : image.pixelColor(image.rect().center()).name().toStdString();
  }

  static std::string colorOf(const QIcon& icon) { return colorOf(icon.pixmap(QSize(16, 16), 1.0).toImage()); }

  const desktop::TemporaryFolder folder_;
};

TEST_F(AppIconsTest, TheFirstInOrderIsTaken) {
  simulated::SimulatedApplications running;
  simulated::SimulatedApplicationIcons icons;
  const auto expect = [&](const char* color, const char* bundleID = "own", const char* parent = "parent") {
    AppIconCache cache(running, icons);
    EXPECT_EQ(colorOf(cache.icon(bundleID, parent, 40)), color);
  };
  running.addApplication({.processID = 10, .bundleIdentifier = "parent"});
  running.addApplication({.processID = 20, .bundleIdentifier = "own"});
  running.addApplication({.processID = 40});
  icons.setGenericIcon(picture("#777777"));
  expect("#777777");
  icons.setRunningIcon(40, picture("#000011"));
  icons.setLocation("own", "/own");
  expect("#000011");
  icons.setFileIcon("/own", picture("#003300"));
  expect("#003300");
  icons.setRunningIcon(20, picture("#001100"));
  expect("#001100");
  expect("#000011", "unknown", "unknown");
  icons.setLocation("parent", "/parent");
  expect("#000011"); // another application's icon would be wrong
  icons.setFileIcon("/parent", picture("#330000"));
  expect("#330000");
  icons.setRunningIcon(10, picture("#110000"));
  expect("#110000");
}

TEST_F(AppIconsTest, ThemesGiveTheBestSizeWhichIsFittedAndGrayed) {
  constexpr auto kIndex = "[Icon Theme]\nName=Test\nDirectories=16x16/apps,64x64/apps\n"
                          "[16x16/apps]\nSize=16\nType=Fixed\n[64x64/apps]\nSize=64\nType=Fixed\n";
  qputenv("XDG_DATA_HOME", folder_.path().c_str());
  qputenv("XDG_DATA_DIRS", (folder_.path("pipes:") + folder_.path("system")).c_str());
  folder_.write("applications/org.example.Player.desktop",
                "[Desktop Entry]\nType=Application\nName=Player\nExec=/bin/sh\nIcon=the-player\n");
  folder_.write("icons/hicolor/index.theme", kIndex);
  picture("#ff0000", "icons/hicolor/16x16/apps/the-player.png", {16, 16});
  picture("#00ff00", "icons/hicolor/64x64/apps/the-player.png", {64, 32});
  folder_.write("system/icons/Adwaita/index.theme", kIndex);
  picture("#0000ff", "system/icons/Adwaita/16x16/apps/application-x-executable.png", {16, 16});
  for (const char* pipe :
       {"pipes/icons/hicolor/index.theme", "icons/hicolor/64x64/apps/pipe.png", "pipe.png"})
    makePipe(pipe);
  for (const auto& [id, icon] : {std::pair{"file", folder_.path("pipe.png")},
                                 {"themed", "pipe"},
                                 {"longer", "pipe-symbolic"},
                                 {"outside", "../../../../pipe"}})
    folder_.write("applications/" + std::string(id) + ".desktop",
                  "[Desktop Entry]\nType=Application\nName=Pipe\nExec=/bin/sh\nIcon=" + icon + "\n");
  QIcon::setThemeName("");
  completeIconThemes();

  const desktop::InstalledDesktopEntries entries(
      {.applications = {folder_.path("applications")}, .programs = {}});
  const desktop::DesktopApplicationIcons icons(entries);
  const simulated::SimulatedApplications running;
  AppIconCache cache(running, icons);
  AppIconProvider provider(cache);
  const auto request = [&](const char* id, int side) {
    return provider.requestImage(id, nullptr, QSize(side, side));
  };
  EXPECT_EQ(colorOf(request("1/org.example.Player//0", 16)), "#ff0000");
  EXPECT_EQ(colorOf(request("1/org.example.Player//0", 20)), "#00ff00") << "a smaller one was enlarged";
  EXPECT_EQ(colorOf(request("2/unknown//0", 16)), "#0000ff");
  for (const char* pipe :
       {"1/file//0", "1/themed//0", "1/longer//0", "1/outside//0"}) // opening it would block
    EXPECT_EQ(colorOf(request(pipe, 16)), "#0000ff") << pipe;
  EXPECT_EQ(colorOf(request("1/org.example.Player//70", 16)), "#722626") << "70 % of the colour taken out";
  EXPECT_EQ(request("1/org.example.Player//0", 64).pixelColor(32, 8).alpha(), 0) << "stretched";
}

} // namespace
} // namespace sonvel
