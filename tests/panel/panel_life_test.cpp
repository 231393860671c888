#include "panel/desktop_session.h"
#include "panel/process_figures.h"
#include "panel/screen_watch.h"
#include "session/eventually.h"
#include "session/tone_client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace sonvel::testing {
namespace {

using namespace session;
using namespace std::chrono_literals;

constexpr auto kName = "Sonvel"; // of the program and of its window
constexpr int kFirst = 10;
constexpr int kAll = 200;
constexpr int kPlayers = 3;

// What the allocator keeps comes and goes by about a megabyte. Ten kilobytes that stay with each opening
// would be more than this.
constexpr std::size_t kAllowance = 2048UL * 1024UL;

struct Holdings {
  std::size_t memory; ///< bytes
  std::size_t files;
  std::size_t objects; ///< in the sound server, of everyone
};

/// The panel of the real program, opened and closed by its icon, with some players whose sound it plays.
class PanelLife : public ::testing::Test {
 protected:
  void SetUp() override {
    for (int number = 1; number <= kPlayers; ++number) {
      players_.push_back(std::make_unique<ToneClient>(
          desktop_.sound(), ToneClientOptions{.binaryName = "player-" + std::to_string(number)}));
      players_.back()->open("tone", {.tone = {.frequency = 500 * number, .amplitude = 0.1}});
    }
    ASSERT_TRUE(desktop_.awaitTrayIcon());
  }

  [[nodiscard]] bool open() {
    desktop_.clickTrayIcon();
    return eventually([&] { return screen_.isPainted(kName); });
  }

  [[nodiscard]] bool close() {
    desktop_.clickTrayIcon();
    return eventually([&] { return !screen_.hasWindow(kName); });
  }

  [[nodiscard]] bool everyPlayerIsTakenOver() {
    return desktop_.sound().waitForGraph([](const Graph& graph) {
      return std::ranges::count_if(graph.objects, [](const GraphObject& object) {
               return object.type == "Node" && object.property("node.name").starts_with("sonvel-tap");
             }) == kPlayers;
    });
  }

  [[nodiscard]] Holdings holdings() {
    return {.memory = memoryOf(sonvel_.pid()).written,
            .files = openFilesOf(sonvel_.pid()),
            .objects = desktop_.sound().graph().objects.size()};
  }

  DesktopSession desktop_{{.hasScreenReader = false}};
  ScreenWatch screen_{desktop_.displayName()};
  std::vector<std::unique_ptr<ToneClient>> players_;
  ChildProcess sonvel_ = desktop_.startSonvel();
};

TEST_F(PanelLife, LeavesNothingBehindHoweverOftenItIsOpened) {
  ASSERT_TRUE(open());
  ASSERT_TRUE(everyPlayerIsTakenOver());
  ASSERT_TRUE(close());
  for (int opening = 2; opening <= kFirst; ++opening) {
    ASSERT_TRUE(open());
    ASSERT_TRUE(close());
  }
  const auto before = holdings();
  for (int opening = kFirst + 1; opening <= kAll; ++opening) {
    ASSERT_TRUE(open()) << opening;
    ASSERT_TRUE(close()) << opening;
  }

  // The last closing may still be under way.
  Holdings after{};
  const bool isBack = eventually(
      [&] {
        after = holdings();
        return after.memory <= before.memory + kAllowance && after.files <= before.files &&
               after.objects <= before.objects;
      },
      10s);
  EXPECT_TRUE(isBack) << "memory " << before.memory << " and then " << after.memory << ", files "
                      << before.files << " and then " << after.files << ", objects " << before.objects
                      << " and then " << after.objects;
}

} // namespace
} // namespace sonvel::testing
