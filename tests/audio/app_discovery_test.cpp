#include "audio/app_discovery.h"
#include "audio/object_access.h"
#include "simulated/desktop.h"
#include "simulated/simulated_audio.h"

#include <gmock/gmock.h>

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

  AudioObjectID addProcess(std::int32_t pid, std::optional<std::string> bundleID, bool isPlaying = true) {
    processes_.setProcess(pid, "process");
    return audio_.addProcess({.pid = pid, .bundleID = std::move(bundleID), .isPlaying = isPlaying});
  }

  simulated::SimulatedAudio audio_;
  simulated::SimulatedProcesses processes_{kOwnPID};
  simulated::SimulatedBundle bundle_{"com.quellmarsh.sonvel"};
  simulated::SimulatedApplications applications_;
};

TEST_F(AppDiscovery, ListsWhatPlaysAndIsNeitherSonvelNorOfTheSystem) {
  const auto player = addProcess(30, "com.example.Player");
  addProcess(31, "com.example.Silent", false);
  const auto helper = addProcess(20, "com.example.Browser.helper.gpu");
  addProcess(kOwnPID, "com.example.Other");
  addProcess(50, "com.quellmarsh.sonvel");
  addProcess(52, std::nullopt);
  addProcess(53, "com.example.Daemon");
  processes_.setProcess(53, "coreaudiod");
  const auto nameless = addProcess(54, "");
  applications_.addApplication({54, std::nullopt, std::nullopt});
  applications_.addApplication({20, "com.example.Browser.helper.gpu", "Something Helper (GPU)"});
  const auto rest = [&](const std::string& helperName) {
    return ElementsAre(
        AudioApp{player, 30, "com.example.Player", "Player", "com.example.Player", true},
        AudioApp{helper, 20, "com.example.Browser.helper.gpu", helperName, "com.example.Browser", true},
        AudioApp{nameless, 54, "pid 54", "Unknown App", std::nullopt, true});
  };
  EXPECT_THAT(discovered(), rest("Something"));
  applications_.addApplication({60, "com.example.Browser", "Browser"});
  EXPECT_THAT(discovered(), rest("Browser"));
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
}

TEST_F(AppDiscovery, SurvivesAListThatShrinksWhileItIsRead) {
  addProcess(80, "com.example.One");
  const auto two = addProcess(81, "com.example.Two");
  audio_.setCallHook([&](Call call, AudioObjectID object) {
    if (call == Call::getPropertyData && object == kSystemObject) audio_.removeProcess(two);
  });
  EXPECT_EQ(processObjectList(audio_).size(), 1U);
}

} // namespace
} // namespace sonvel
