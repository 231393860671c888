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

namespace sonvel {
namespace {

/// Pictures of one colour each, which tell where an icon came from.
class AppIconsTest : public testing::Test {
 protected:
  std::string picture(const std::string& color, const std::string& file = {}, QSize size = {32, 32}) const {
    auto path = folder_.write(file.empty() ? color + ".png" : file, "");
    QImage image(size, QImage::Format_ARGB32);
    image.fill(QColor(QString::fromStdString(color)));
    EXPECT_TRUE(image.save(QString::fromStdString(path), "PNG"));
    return path;
  }

  static std::string colorOf(const QImage& image) {
    return image.isNull() ? "none" : image.pixelColor(image.rect().center()).name().toStdString();
  }

  static std::string colorOf(const QIcon& icon) { return colorOf(icon.pixmap(QSize(16, 16), 1.0).toImage()); }

  const desktop::TemporaryFolder folder_;
};

TEST_F(AppIconsTest, TheFirstInOrderIsTaken) {
  using Text = std::optional<std::string>;
  const std::string runningParent = "#110000";
  const std::string installedParent = "#330000";
  const std::string runningOwn = "#001100";
  const std::string installedOwn = "#003300";
  const std::string process = "#000011";
  const std::string generic = "#777777";

  // What is on the desktop besides the generic icon; "-" is installed without an icon.
  const struct {
    std::string expected;
    std::vector<std::string> icons;
    bool isParentInstalled = true;
    Text bundleID = "own";
    Text parentBundleID = "parent";
  } cases[] = {
      {runningParent, {runningParent, installedParent, runningOwn, installedOwn, process}},
      {installedParent, {installedParent, runningOwn, installedOwn, process}},
      {process, {runningOwn, installedOwn, process}}, // another's icon would be wrong for the parent
      {runningOwn, {runningOwn, installedOwn, process}, false},
      {installedOwn, {installedOwn, process}, false, "own", std::nullopt},
      {process, {runningParent, runningOwn, process}, true, "unknown", std::nullopt},
      {generic, {}, false, "unknown", std::nullopt},
  };

  for (const auto& [expected, icons, isParentInstalled, bundleID, parentBundleID] : cases) {
    simulated::SimulatedApplications running;
    simulated::SimulatedApplicationIcons given;
    AppIconCache cache(running, given);
    given.setGenericIcon(picture(generic));
    if (isParentInstalled) given.setLocation("parent", "/parent");
    given.setLocation("own", "/own");
    for (const auto& [pid, id, color] : {std::tuple{10, Text("parent"), runningParent},
                                         {20, "own", runningOwn},
                                         {40, std::nullopt, process}}) {
      running.addApplication({.processID = pid, .bundleIdentifier = id});
      if (std::ranges::count(icons, color) > 0) given.setRunningIcon(pid, picture(color));
    }
    for (const auto& [path, color] : {std::pair{"/parent", installedParent}, {"/own", installedOwn}})
      if (std::ranges::count(icons, color) > 0) given.setFileIcon(path, picture(color));
    EXPECT_EQ(colorOf(cache.icon(bundleID, parentBundleID, 40)), expected);
    given.setRunningIcon(10, picture("#ffffff"));
    given.setRunningIcon(40, picture("#ffffff"));
    EXPECT_EQ(colorOf(cache.icon(bundleID, parentBundleID, 40)), expected) << "it is kept";
  }
}

TEST_F(AppIconsTest, ThemesGiveTheBestSizeWhichIsFittedAndGrayed) {
  constexpr auto kIndex = "[Icon Theme]\nName=Test\nDirectories=16x16/apps,64x64/apps\n"
                          "[16x16/apps]\nSize=16\nType=Fixed\n[64x64/apps]\nSize=64\nType=Fixed\n";
  qputenv("XDG_DATA_HOME", folder_.path().c_str());
  qputenv("XDG_DATA_DIRS", folder_.path("system").c_str());
  folder_.write("applications/org.example.Player.desktop",
                "[Desktop Entry]\nType=Application\nName=Player\nExec=/bin/sh\nIcon=the-player\n");
  folder_.write("icons/hicolor/index.theme", kIndex);
  picture("#ff0000", "icons/hicolor/16x16/apps/the-player.png", {16, 16});
  picture("#00ff00", "icons/hicolor/64x64/apps/the-player.png", {64, 32});
  folder_.write("system/icons/Adwaita/index.theme", kIndex);
  picture("#0000ff", "system/icons/Adwaita/16x16/apps/application-x-executable.png", {16, 16});
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
  EXPECT_EQ(colorOf(request("1/org.example.Player//70", 16)), "#722626") << "70 % of the colour taken out";
  EXPECT_EQ(request("1/org.example.Player//0", 64).pixelColor(32, 8).alpha(), 0) << "stretched";
}

} // namespace
} // namespace sonvel
