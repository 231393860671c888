#include "simulated/application_icons.h"
#include "simulated/desktop.h"
#include "ui/icons/app_icon_provider.h"
#include "ui/icons/colored_icons.h"

#include <gmock/gmock.h>

#include <QQmlComponent>
#include <QQmlEngine>
#include <memory>
#include <thread>

namespace sonvel {
namespace {

constexpr auto kRed = "#ff0000";

/// Writes down what is asked for.
class AskedApplications final : public RunningApplications {
 public:
  std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) const override {
    asked.push_back("pid " + std::to_string(pid));
    return std::nullopt;
  }

  std::vector<RunningApplication>
  runningApplicationsWithBundleIdentifier(const std::string& id) const override {
    asked.push_back(id);
    return {};
  }

  mutable std::vector<std::string> asked;
};

class AppIconProviderTest : public testing::Test {
 protected:
  void setIcon(const std::string& icon) { icons_.setGenericIcon(icon); }

  QImage request(const char* id, QSize size) { return provider_.requestImage(id, nullptr, size); }

  const ColoredIcons pictures_;
  AskedApplications running_;
  simulated::SimulatedApplicationIcons icons_;
  AppIconCache cache_{running_, icons_};
  AppIconProvider provider_{cache_};
};

TEST_F(AppIconProviderTest, TakesItsIdFromQmlAsItWasEncodedThere) {
  QQmlEngine engine;
  engine.addImageProvider(AppIconProvider::kID, std::make_unique<AppIconProvider>(cache_).release());
  const auto show = [&](const char* own, const char* parent) {
    QQmlComponent component(&engine);
    component.setData(QByteArray("import QtQuick\nImage { sourceSize: Qt.size(18, "
                                 "18); source: 'image://app-icon/42/'"
                                 " + encodeURIComponent('") +
                          own + "') + '/' + encodeURIComponent('" + parent + "') + '/70' }",
                      {});
    const std::unique_ptr<QObject> image(component.create());
    ASSERT_NE(image, nullptr) << qPrintable(component.errorString());
    EXPECT_EQ(image->property("status").toInt(), 1) << "not ready";
    EXPECT_EQ(image->property("implicitWidth").toInt(), 18);
  };
  show("org.example.Player", "");
  show("a b/c%20d?e#f:\u00fc", "up/../%2F");
  show("", "");
  EXPECT_THAT(running_.asked, testing::ElementsAre("org.example.Player", "pid 42", "up/../%2F",
                                                   "a b/c%20d?e#f:\u00fc", "pid 42", "pid 42"));
}

TEST_F(AppIconProviderTest, GivesNothingForAWrongId) {
  setIcon(pictures_.write("icon.png", kRed));
  for (const auto* id : {"", "42", "42/own/parent", "42/own/parent/more/0", "x/own/parent/0",
                         "42/own/parent/", "42/own/parent/101", "42/own/parent/-1"})
    EXPECT_TRUE(request(id, {16, 16}).isNull()) << id;
  EXPECT_THAT(running_.asked, testing::IsEmpty());
  std::thread([&] { EXPECT_TRUE(request("42///0", {16, 16}).isNull()) << "off the main thread"; }).join();
  EXPECT_THAT(running_.asked, testing::IsEmpty());
  EXPECT_FALSE(request("42///0", {16, 16}).isNull());
}

TEST_F(AppIconProviderTest, FitsTheIconIntoTheSizeAskedFor) {
  setIcon(pictures_.write("wide.png", kRed, {64, 32}));
  for (const auto& [requested, expected] :
       {std::pair(QSize(16, 16), QSize(16, 16)), {{200, 200}, {200, 200}}, {{-2, -2}, {64, 64}}}) {
    const auto image = request("42///0", requested);
    ASSERT_EQ(image.size(), expected);
    const int side = expected.width();
    EXPECT_EQ(image.pixelColor(side / 2, side / 8).alpha(), 0);
    EXPECT_EQ(image.pixelColor(side / 2, side - 1 - side / 8).alpha(), 0);
    for (const int x : {0, side / 2, side - 1})
      EXPECT_EQ(image.pixelColor(x, side / 2), QColor(kRed)) << x;
  }
}

TEST_F(AppIconProviderTest, IsTransparentWhereThereIsNoIcon) {
  const auto image = request("42///0", {16, 16});
  ASSERT_EQ(image.size(), QSize(16, 16));
  EXPECT_EQ(image.pixelColor(8, 8).alpha(), 0);
}

TEST_F(AppIconProviderTest, TakesTheColorOutAndLeavesTheBrightness) {
  const struct {
    const char* color;
    const char* id;
    QColor expected;
  } cases[] = {
      {"#ff0000", "1/red//0", QColor(255, 0, 0)},
      {"#ff0000", "1/red//70", QColor(114, 38, 38)}, // 0.2126 of 255, 70 parts of 100, and 30 of the rest
      {"#ff0000", "1/red//100", QColor(54, 54, 54)},
      {"#0000ff", "1/blue//70", QColor(13, 13, 89)},
      {"#808080", "1/gray//70", QColor(128, 128, 128)},
      {"#8000ff00", "1/glass//100", QColor(182, 182, 182, 128)},
  };

  for (const auto& [color, id, expected] : cases) {
    SCOPED_TRACE(id);
    setIcon(pictures_.write("icon" + std::string(color + 1) + ".png", color));
    const auto pixel = request(id, {16, 16}).pixelColor(8, 8);
    EXPECT_EQ(pixel.alpha(), expected.alpha());
    EXPECT_NEAR(pixel.red(), expected.red(), 1);
    EXPECT_NEAR(pixel.green(), expected.green(), 1);
    EXPECT_NEAR(pixel.blue(), expected.blue(), 1);
  }
}

} // namespace
} // namespace sonvel
