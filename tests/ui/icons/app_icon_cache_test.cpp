#include "simulated/application_icons.h"
#include "simulated/desktop.h"
#include "ui/icons/app_icon_cache.h"
#include "ui/icons/colored_icons.h"

#include <gtest/gtest.h>

#include <map>

namespace sonvel {
namespace {

constexpr auto kParentRunning = "#110000";
constexpr auto kParentSecond = "#220000";
constexpr auto kParentFile = "#330000";
constexpr auto kOwnRunning = "#001100";
constexpr auto kOwnFile = "#003300";
constexpr auto kProcess = "#000011";
constexpr auto kGeneric = "#777777";
constexpr auto kBroken = "broken";
constexpr std::int32_t kPid = 40;

/// The world a row's application lives in. Colours are those of its icons.
struct World {
  std::map<std::int32_t, std::string> running = {}; ///< bundle identifiers, "" for none, in order of pid
  std::map<std::int32_t, const char*> runningIcons = {};
  std::map<std::string, const char*> installed = {}; ///< "" for a location without an icon
  const char* generic = kGeneric;
};

class AppIconCacheTest : public testing::Test {
 protected:
  void enter(const World& world) {
    for (const auto& [pid, id] : world.running)
      running_.addApplication(
          {.processID = pid, .bundleIdentifier = id.empty() ? std::nullopt : std::optional(id)});
    for (const auto& [pid, color] : world.runningIcons)
      icons_.setRunningIcon(pid, picture(color));
    for (const auto& [id, color] : world.installed) {
      icons_.setLocation(id, "/applications/" + id);
      if (*color != '\0') icons_.setFileIcon("/applications/" + id, picture(color));
    }
    if (world.generic != nullptr) icons_.setGenericIcon(picture(world.generic));
  }

  std::string picture(const std::string& color) const {
    if (color == kBroken) return pictures_.folder().write("broken.png", "no picture");
    return pictures_.write(color.substr(1) + ".png", color.c_str());
  }

  const ColoredIcons pictures_;
  simulated::SimulatedApplications running_;
  simulated::SimulatedApplicationIcons icons_;
  AppIconCache cache_{running_, icons_};
};

struct SearchCase {
  const char* name;
  World world;
  std::optional<std::string> bundleID;
  std::optional<std::string> parentBundleID;
  std::string expected;
};

void PrintTo(const SearchCase& test, std::ostream* out) {
  *out << test.name;
}

class AppIconSearch : public AppIconCacheTest, public testing::WithParamInterface<SearchCase> {};

TEST_P(AppIconSearch, FindsTheFirstInOrder) {
  const auto& test = GetParam();
  enter(test.world);
  EXPECT_EQ(colorOf(cache_.icon(test.bundleID, test.parentBundleID, kPid)), test.expected);
}

const World kEverything{
    .running = {{10, "parent"}, {11, "parent"}, {20, "own"}, {kPid, ""}},
    .runningIcons = {{10, kParentRunning}, {11, kParentSecond}, {20, kOwnRunning}, {kPid, kProcess}},
    .installed = {{"parent", kParentFile}, {"own", kOwnFile}}};

World without(World world, std::initializer_list<std::int32_t> icons) {
  for (const auto pid : icons)
    world.runningIcons.erase(pid);
  return world;
}

World installed(World world, std::map<std::string, const char*> applications) {
  world.installed = std::move(applications);
  return world;
}

INSTANTIATE_TEST_SUITE_P(
    , AppIconSearch,
    testing::Values(
        SearchCase{"theRunningParent", kEverything, "own", "parent", kParentRunning},
        SearchCase{"theInstalledParentBeforeItsSecondProcess", without(kEverything, {10}), "own", "parent",
                   kParentFile},
        SearchCase{"theProcessAfterAnInstalledParentWithoutIcon",
                   installed(without(kEverything, {10}), {{"parent", ""}, {"own", kOwnFile}}), "own",
                   "parent", kProcess},
        SearchCase{"theProcessAfterAnInstalledParentWithABrokenIcon",
                   installed(without(kEverything, {10}), {{"parent", kBroken}}), "own", "parent", kProcess},
        SearchCase{"oneselfRunningAfterAParentThatIsNotInstalled",
                   installed(without(kEverything, {10}), {{"own", kOwnFile}}), "own", "parent", kOwnRunning},
        SearchCase{"oneselfRunningWithoutAParent", kEverything, "own", std::nullopt, kOwnRunning},
        SearchCase{"oneselfInstalled", without(kEverything, {20}), "own", std::nullopt, kOwnFile},
        SearchCase{"theParentAlone", kEverything, std::nullopt, "parent", kParentRunning},
        SearchCase{"theProcessOfWhatIsUnknown", kEverything, "pid 40", std::nullopt, kProcess},
        SearchCase{"theProcessOfWhatHasNoName", kEverything, std::nullopt, std::nullopt, kProcess},
        SearchCase{"theGenericIcon", without(kEverything, {kPid}), "unknown", "unheard", kGeneric},
        SearchCase{"nothing", {.generic = nullptr}, "own", "parent", "none"},
        SearchCase{"nothingInABrokenGenericIcon", {.generic = kBroken}, "own", "parent", "none"}),
    [](const auto& test) { return test.param.name; });

TEST_F(AppIconCacheTest, KeepsWhatItFoundUnderTheNearestName) {
  enter(kEverything);
  ASSERT_EQ(colorOf(cache_.icon("own", "parent", kPid)), kParentRunning);
  ASSERT_EQ(colorOf(cache_.icon(std::nullopt, std::nullopt, kPid)), kProcess);
  ASSERT_EQ(colorOf(cache_.icon("unknown", std::nullopt, 41)), kGeneric);
  running_.addApplication({.processID = 42, .bundleIdentifier = "unknown"});
  for (const auto pid : {10, 20, kPid, 42})
    icons_.setRunningIcon(pid, picture("#ffffff"));

  EXPECT_EQ(colorOf(cache_.icon("other helper", "parent", 43)), kParentRunning);
  EXPECT_EQ(colorOf(cache_.icon(std::nullopt, std::nullopt, kPid)), kProcess);
  EXPECT_EQ(colorOf(cache_.icon("unknown", std::nullopt, 42)), kGeneric);
  EXPECT_EQ(colorOf(cache_.icon("own", std::nullopt, kPid)), "#ffffff")
      << "not asked for by this name before";
  EXPECT_EQ(colorOf(cache_.icon(std::nullopt, std::nullopt, 42)), "#ffffff") << "nor for this process";
}

} // namespace
} // namespace sonvel
