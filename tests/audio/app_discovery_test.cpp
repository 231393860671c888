#include "audio/app_discovery.h"
#include "audio/object_access.h"
#include "simulated/desktop.h"
#include "simulated/simulated_audio.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unordered_set>

namespace sonvel {
namespace {

using simulated::Call;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int32_t kOwnPID = 4000;

class AppDiscovery : public testing::Test {
 protected:
  std::vector<AudioApp> discovered() {
    return enumerateAudibleApps({audio_, processes_, bundle_, applications_});
  }

  std::vector<std::string> discoveredNames() {
    std::vector<std::string> names;
    for (const auto& app : discovered())
      names.push_back(app.name);
    return names;
  }

  AudioObjectID addProcess(std::int32_t pid, std::optional<std::string> bundleID, bool isPlaying = true) {
    processes_.setProcess(pid, "process");
    return audio_.addProcess({.pid = pid, .bundleID = std::move(bundleID), .isPlaying = isPlaying});
  }

  simulated::SimulatedAudio audio_;
  simulated::SimulatedProcesses processes_{kOwnPID};
  simulated::SimulatedBundle bundle_{"com.quellmarsh.sonvel"};
  simulated::SimulatedApplications applications_;
};

TEST_F(AppDiscovery, ListsWhatPlaysInTheOrderOfTheSystem) {
  const auto player = addProcess(30, "com.example.Player");
  addProcess(31, "com.example.Silent", false);
  const auto recorder = addProcess(20, "com.example.Recorder");
  applications_.addApplication({30, "com.example.Player", "Player Deluxe"});

  EXPECT_THAT(
      discovered(),
      ElementsAre(AudioApp{player, 30, "com.example.Player", "Player Deluxe", "com.example.Player", true},
                  AudioApp{recorder, 20, "com.example.Recorder", "Recorder", "com.example.Recorder", true}));
}

TEST_F(AppDiscovery, HidesItselfAndThePlumbing) {
  addProcess(kOwnPID, "com.example.Other");
  addProcess(50, "com.quellmarsh.sonvel");
  addProcess(51, "com.quellmarsh.Sonvel");
  addProcess(52, std::nullopt);
  addProcess(53, "com.example.Daemon");
  processes_.setProcess(53, "coreaudiod");

  const auto apps = discovered();
  ASSERT_EQ(apps.size(), 1U);
  EXPECT_EQ(apps[0].pid, 51) << "the case of an identifier counts";
}

TEST_F(AppDiscovery, KeysAProcessWithoutIdentifierByItsPID) {
  const auto named = addProcess(4711, std::nullopt);
  const auto nameless = addProcess(4712, "");
  applications_.addApplication({4711, std::nullopt, "Tool Helper"});
  applications_.addApplication({4712, std::nullopt, std::nullopt});

  EXPECT_THAT(discovered(),
              ElementsAre(AudioApp{named, 4711, "pid 4711", "Tool", std::nullopt, true},
                          AudioApp{nameless, 4712, "pid 4712", "Unknown App", std::nullopt, true}));
}

TEST_F(AppDiscovery, NamesHelpersAfterTheirApplication) {
  addProcess(61, "com.example.Browser.helper.renderer");
  addProcess(62, "com.example.Browser.helper.gpu");
  applications_.addApplication({60, "com.example.Browser", "Browser"});
  applications_.addApplication({62, "com.example.Browser.helper.gpu", "Something Helper (GPU)"});

  const auto apps = discovered();
  ASSERT_EQ(apps.size(), 2U);
  for (const auto& app : apps) {
    EXPECT_EQ(app.parentBundleID, "com.example.Browser");
    EXPECT_EQ(app.name, "Browser");
  }
}

TEST_F(AppDiscovery, FallsBackOnTheHelpersOwnName) {
  addProcess(62, "com.example.Browser.helper.gpu");
  applications_.addApplication({62, "com.example.Browser.helper.gpu", "Something Helper (GPU)"});
  EXPECT_THAT(discoveredNames(), ElementsAre("Something"));

  applications_.addApplication({60, "com.example.Browser", std::nullopt});
  EXPECT_THAT(discoveredNames(), ElementsAre("Something")) << "the application has no name";
}

TEST_F(AppDiscovery, LeavesOutWhatCannotBeRead) {
  const auto object = addProcess(70, "com.example.Player");
  applications_.addApplication({70, "com.example.Player", "Player"});
  const auto failing = [&](Call call, AudioObjectID failingObject, std::uint32_t selector) {
    audio_.clearFailures();
    audio_.fail({.call = call, .object = failingObject, .selector = selector, .times = std::nullopt});
    return discovered();
  };

  EXPECT_THAT(failing(Call::getPropertyDataSize, kSystemObject, property::kProcessObjectList), IsEmpty());
  EXPECT_THAT(failing(Call::getPropertyData, kSystemObject, property::kProcessObjectList), IsEmpty());
  EXPECT_THAT(failing(Call::getPropertyData, object, property::kProcessIsRunningOutput), IsEmpty());
  EXPECT_THAT(failing(Call::getPropertyText, object, property::kProcessBundleID),
              ElementsAre(AudioApp{object, 70, "pid 70", "Player", std::nullopt, true}));
  EXPECT_THAT(failing(Call::getPropertyData, object, property::kProcessPID),
              ElementsAre(AudioApp{object, 0, "com.example.Player", "Player", "com.example.Player", true}));
}

TEST_F(AppDiscovery, SurvivesAListThatShrinksWhileItIsRead) {
  addProcess(80, "com.example.One");
  const auto two = addProcess(81, "com.example.Two");
  audio_.setCallHook([&](Call call, AudioObjectID object) {
    if (call == Call::getPropertyData && object == kSystemObject) audio_.removeProcess(two);
  });
  EXPECT_EQ(processObjectList(audio_).size(), 1U);
}

TEST_F(AppDiscovery, ReadsTheShortNameOfAProcess) {
  processes_.setProcess(90, "player");
  EXPECT_EQ(executableName(processes_, 90), "player");
  EXPECT_EQ(executableName(processes_, 91), std::nullopt);

  const std::string tooLong(5000, 'x');
  processes_.setProcess(92, tooLong);
  const auto cut = executableName(processes_, 92);
  ASSERT_TRUE(cut);
  EXPECT_EQ(*cut, tooLong.substr(0, 1023));
}

TEST(AudioApp, EveryFieldCountsInEqualityAndHash) {
  const AudioApp app{7, 30, "com.example.Player", "Player", "com.example.Player", true};
  std::vector<AudioApp> others(6, app);
  others[0].objectID = 8;
  others[1].pid = 31;
  others[2].bundleID = "com.example.player";
  others[3].name = "Player 2";
  others[4].parentBundleID = std::nullopt;
  others[5].isPlayingOutput = false;

  std::unordered_set<std::size_t> hashes{std::hash<AudioApp>{}(app)};
  for (const auto& other : others) {
    EXPECT_NE(other, app);
    hashes.insert(std::hash<AudioApp>{}(other));
  }
  EXPECT_EQ(hashes.size(), 7U);
}

} // namespace
} // namespace sonvel
