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

constexpr auto kParentRunning = "#110000";
constexpr auto kParentFile = "#330000";
constexpr auto kOwnRunning = "#001100";
constexpr auto kOwnFile = "#003300";
constexpr auto kProcess = "#000011";
constexpr auto kGeneric = "#777777";
constexpr std::int32_t kPid = 40;

/// What is on the desktop, besides the process itself; an icon is the colour of its picture.
struct Desktop {
  const char* runningParent = kParentRunning;
  const char* installedParent = kParentFile; ///< "" if it has no icon, null if it is not installed
  const char* runningOwn = kOwnRunning;
  const char* process = kProcess;
};

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

  void addRunning(std::int32_t pid, std::optional<std::string> id, const char* color) {
    running_.addApplication({.processID = pid, .bundleIdentifier = std::move(id)});
    if (color != nullptr) icons_.setRunningIcon(pid, picture(color));
  }

  void addInstalled(const std::string& id, const char* color) {
    if (color == nullptr) return;
    icons_.setLocation(id, "/applications/" + id);
    if (*color != '\0') icons_.setFileIcon("/applications/" + id, picture(color));
  }

  static std::string colorOf(const QImage& image) {
    return image.isNull() ? "none" : image.pixelColor(image.rect().center()).name().toStdString();
  }

  static std::string colorOf(const QIcon& icon) { return colorOf(icon.pixmap(QSize(16, 16), 1.0).toImage()); }

  const desktop::TemporaryFolder folder_;
  simulated::SimulatedApplications running_;
  simulated::SimulatedApplicationIcons icons_;
  AppIconCache cache_{running_, icons_};
};

struct SearchCase {
  const char* what;
  Desktop desktop;
  std::optional<std::string> bundleID;
  std::optional<std::string> parentBundleID;
  const char* expected;
};

class AppIconSearch : public AppIconsTest, public testing::WithParamInterface<SearchCase> {};

TEST_P(AppIconSearch, TakesTheFirstInOrder) {
  const auto& [what, desktop, bundleID, parentBundleID, expected] = GetParam();
  addRunning(10, "parent", desktop.runningParent);
  addRunning(11, "parent", "#220000"); // never the first
  addRunning(20, "own", desktop.runningOwn);
  addRunning(kPid, std::nullopt, desktop.process);
  addInstalled("parent", desktop.installedParent);
  addInstalled("own", kOwnFile);
  icons_.setGenericIcon(picture(kGeneric));
  EXPECT_EQ(colorOf(cache_.icon(bundleID, parentBundleID, kPid)), expected);
}

INSTANTIATE_TEST_SUITE_P(
    , AppIconSearch,
    testing::Values(SearchCase{"RunningParent", {}, "own", "parent", kParentRunning},
                    SearchCase{"InstalledParent", {.runningParent = nullptr}, "own", "parent", kParentFile},
                    SearchCase{"ProcessIfTheParentHasNoIcon",
                               {.runningParent = nullptr, .installedParent = ""},
                               "own",
                               "parent",
                               kProcess},
                    SearchCase{"ItselfIfTheParentIsNotThere",
                               {.runningParent = nullptr, .installedParent = nullptr},
                               "own",
                               "parent",
                               kOwnRunning},
                    SearchCase{"ItselfInstalled", {.runningOwn = nullptr}, "own", std::nullopt, kOwnFile},
                    SearchCase{"ProcessOfWhatIsUnknown", {}, "pid 40", std::nullopt, kProcess},
                    SearchCase{"Generic", {.process = nullptr}, "unknown", std::nullopt, kGeneric}),
    [](const auto& tested) { return tested.param.what; });

TEST_F(AppIconsTest, AFoundIconIsKeptUnderTheNearestNameAndAMissingOneIsNot) {
  EXPECT_EQ(colorOf(cache_.icon("helper", "parent", 1)), "none");
  addRunning(10, "parent", kParentRunning);
  EXPECT_EQ(colorOf(cache_.icon("helper", "parent", 1)), kParentRunning);
  icons_.setRunningIcon(10, picture("#ffffff"));
  EXPECT_EQ(colorOf(cache_.icon("another helper", "parent", 2)), kParentRunning);
  EXPECT_EQ(colorOf(cache_.icon("parent", std::nullopt, 10)), kParentRunning);
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
  AppIconCache cache(running_, icons);
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
