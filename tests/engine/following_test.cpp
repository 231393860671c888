// Sessions while devices, processes and routes come and go.

#include "engine/controller_test.h"

namespace sonvel {
namespace {

using namespace std::chrono_literals;
using simulated::Call;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class Following : public ControllerTest {
 protected:
  Following() {
    controller_->onSessionChanged([this](SessionReport report) { reports_[report.key] = std::move(report); });
    controller_->onOutputDevicesChanged(
        [this](const std::vector<AudioOutputDevice>& devices) { deviceCount_ = devices.size(); });
  }

  AudioObjectID startProcess(const std::string& bundleID, float sample, bool isPlaying = true,
                             std::optional<std::string> rememberedUID = std::nullopt) {
    return audio_.addProcess({.pid = ++lastPID_,
                              .bundleID = bundleID,
                              .isPlaying = isPlaying,
                              .streams = {simulated::constantSignal(sample, sample)},
                              .outputUID = std::move(rememberedUID)});
  }

  /// What both devices make audible after all changes were followed.
  std::pair<float, float> heardAtBoth() {
    executor_->runAll();
    const float speakers = heard("speakers");
    return {speakers, audio_.deviceWithUID("headset") != 0 ? heard("headset") : 0.0F};
  }

  const SessionReport& report(AudioObjectID objectID = 87) {
    executor_->runAll();
    return reports_["com.example.Player" + std::to_string(objectID)];
  }

  std::map<std::string, SessionReport> reports_;
  std::size_t deviceCount_ = 0;
  std::int32_t lastPID_ = 1000;
};

using Both = std::pair<float, float>;

TEST_F(Following, GoesToTheRouteWhileThatIsConnectedOtherwiseToTheDefault) {
  controller_->addChannel(playingApp(87), 0.5F, false, std::nullopt);
  controller_->addChannel(playingApp(88, 0.5F), 0.5F, false, "headset");
  EXPECT_EQ(heardAtBoth(), Both(0.125F, 0.25F));
  EXPECT_EQ(report(88).playingUID, "headset");
  audio_.setDefaultDevice("headset");
  EXPECT_EQ(heardAtBoth(), Both(0.0F, 0.375F));
  audio_.removeDevice("headset");
  audio_.setDefaultDevice("speakers");
  EXPECT_EQ(heardAtBoth(), Both(0.375F, 0.0F));
  EXPECT_EQ(report(88).outputUID, "headset");
  EXPECT_EQ(report(88).playingUID, "speakers");
  EXPECT_FALSE(report(88).isOutputConnected);
  EXPECT_EQ(deviceCount_, 1U);
  audio_.returnDevice("headset");
  EXPECT_EQ(heardAtBoth(), Both(0.125F, 0.25F));
  EXPECT_TRUE(report(88).isOutputConnected);
  EXPECT_EQ(deviceCount_, 2U);

  audio_.removeDevice("headset");
  controller_->setOutput("headset", 87);
  EXPECT_EQ(heardAtBoth(), Both(0.375F, 0.0F)) << "a route that has just gone is no failure";
  audio_.setDefaultDevice(std::nullopt);
  EXPECT_TRUE(report(87).exists) << "with nowhere to go it stays";
}

TEST_F(Following, ObeysWhatIsChosenElsewhere) {
  const auto app = playingApp(87);
  audio_.setProcessOutput(87, "headset");
  controller_->addChannel(app, 0.5F, false, std::nullopt);
  EXPECT_EQ(heardAtBoth(), Both(0.0F, 0.125F)) << "where its user had sent it before";
  EXPECT_EQ(report().outputUID, "headset");
  audio_.setProcessOutput(87, "speakers");
  EXPECT_EQ(heardAtBoth(), Both(0.125F, 0.0F));
  EXPECT_EQ(report().outputUID, "speakers");
  audio_.setDefaultDevice("headset");
  EXPECT_EQ(heardAtBoth(), Both(0.125F, 0.0F));
  audio_.setProcessOutput(87, std::nullopt);
  EXPECT_EQ(heardAtBoth(), Both(0.0F, 0.125F)) << "follow was chosen elsewhere";
  EXPECT_EQ(report().outputUID, std::nullopt);

  audio_.setProcessOutput(87, "speakers");
  executor_->runAll();
  controller_->setOutput(std::nullopt, 87);
  EXPECT_EQ(heardAtBoth(), Both(0.0F, 0.125F)) << "a choice here is newer";
  audio_.setProcessOutput(87, "speakers");
  EXPECT_EQ(heardAtBoth(), Both(0.125F, 0.0F)) << "the same choice again is newer still";
  controller_->setOutput(std::nullopt, 87);
  controller_->removeChannel(87);
  addChannel(app);
  EXPECT_EQ(heardAtBoth(), Both(0.0F, 0.25F)) << "and remains so";
}

TEST_F(Following, AChoiceOutlivesTheProcessThatItWasMadeFor) {
  const auto app = playingApp(87);
  addChannel(app);
  const auto second = startProcess(app.bundleID, 0.5F, true, "headset");
  EXPECT_EQ(heardAtBoth(), Both(0.0F, 0.75F)) << "remembered for a new one";
  audio_.setProcessOutput(second, "headset");
  audio_.setProcessOutput(87, std::nullopt);
  EXPECT_EQ(heardAtBoth(), Both(0.75F, 0.0F));
  audio_.removeProcess(87);
  EXPECT_EQ(heardAtBoth(), Both(0.5F, 0.0F));
  controller_->removeChannel(controller_->controlledAppIDs().front());
  addChannel({.objectID = second, .bundleID = app.bundleID});
  EXPECT_EQ(heardAtBoth(), Both(0.5F, 0.0F)) << "for a new session too";
  audio_.removeProcess(second);
  executor_->runAll();
  addChannel({.objectID = startProcess(app.bundleID, 0.5F, true, "headset"), .bundleID = app.bundleID});
  EXPECT_EQ(heardAtBoth(), Both(0.5F, 0.0F)) << "though another device is remembered for another stream";
}

TEST_F(Following, AnOlderChoiceForAnotherProcessDoesNotReplaceKeptSettings) {
  const auto app = playingApp(87);
  addChannel(app);
  audio_.setProcessOutput(87, std::nullopt);
  audio_.setPlaying(87, false);
  executor_->runAll();
  controller_->removeChannel(87);
  controller_->keepSettings(app.bundleID, 1.0F, false, "headset");
  executor_->runAll();
  startProcess(app.bundleID, 0.5F);
  EXPECT_EQ(heardAtBoth(), Both(0.0F, 0.5F));
}

TEST_F(Following, FollowChosenHereHoldsAtTheNextStartThoughAnotherDeviceIsRemembered) {
  const auto app = playingApp(87);
  audio_.setProcessOutput(87, "headset");
  addChannel(app);
  audio_.removeProcess(87);
  executor_->runAll();
  controller_->holdRoute(app.bundleID, true);
  controller_->keepSettings(app.bundleID, 1.0F, false, std::nullopt);
  for (int starts = 0; starts < 2; ++starts) {
    executor_->runAll();
    const auto first = startProcess(app.bundleID, 0.5F, true, "headset");
    EXPECT_EQ(heardAtBoth(), Both(0.5F, 0.0F));
    EXPECT_EQ(report().outputUID, std::nullopt);
    audio_.removeProcess(first);
  }
  audio_.setProcessOutput(startProcess(app.bundleID, 0.5F), "headset");
  EXPECT_EQ(heardAtBoth(), Both(0.0F, 0.5F)) << "a choice made now is newer";
}

TEST_F(Following, FollowChosenHereKeepsNoTapWhereNoOtherDeviceIsRemembered) {
  const auto app = playingApp(87);
  addChannel(app);
  for (const auto& device : {std::optional<std::string>("headset"), std::optional<std::string>()}) {
    audio_.setProcessOutput(87, device);
    executor_->runAll();
  }
  controller_->holdRoute(app.bundleID, true);
  audio_.removeProcess(87);
  executor_->runAll();
  controller_->keepSettings(app.bundleID, 1.0F, false, std::nullopt);
  executor_->runAll();
  EXPECT_TRUE(audio_.taps().empty());
}

TEST_F(Following, NothingStaysOfProcessesThatHaveEnded) {
  const auto start = [this] {
    const auto process = audio_.addProcess(
        {.pid = 7, .streams = {simulated::constantSignal(0.5F, 0.5F)}, .outputUID = "headset"});
    addChannel({.objectID = process, .pid = 7, .bundleID = "pid 7", .name = "Player"});
    return process;
  };
  const auto first = start();
  controller_->setOutput(std::nullopt, first);
  EXPECT_EQ(heardAtBoth(), Both(0.5F, 0.0F));
  audio_.removeProcess(first);
  executor_->runAll();
  start();
  EXPECT_EQ(heardAtBoth(), Both(0.0F, 0.5F)) << "the process ID is another program's now";

  const auto app = playingApp(87);
  addChannel(app);
  std::vector<AudioObjectID> ended;
  for (int i = 0; i < 300; ++i) {
    ended.push_back(startProcess(app.bundleID, 0.25F));
    executor_->runAll();
    audio_.removeProcess(ended.back());
    executor_->runAll();
  }
  EXPECT_TRUE(controller_->isControlled(ended.back())) << "callers may not know yet";
  EXPECT_FALSE(controller_->isControlled(ended.front()));
}

TEST_F(Following, EachSessionHasItsTurnWhileChangesKeepArriving) {
  addChannel(playingApp(87));
  addChannel(playingApp(88));
  executor_->runAll();
  for (const auto* device : {"headset", "speakers", "headset"}) {
    audio_.setDefaultDevice(device);
    executor_->runNext();
  }
  EXPECT_EQ(reports_["com.example.Player88"].playingUID, "headset");
}

TEST_F(Following, TheDeviceOfAChoiceMayGoAndComeBack) {
  const auto app = playingApp(87);
  audio_.setProcessOutput(87, "headset");
  addChannel(app);
  executor_->runAll();
  audio_.removeDevice("headset");
  EXPECT_EQ(heardAtBoth(), Both(0.25F, 0.0F));
  EXPECT_EQ(report().outputUID, "headset");
  audio_.returnDevice("headset");
  EXPECT_EQ(heardAtBoth(), Both(0.0F, 0.25F));
}

TEST_F(Following, HasAllProcessesOfTheApplication) {
  const auto first = playingApp(87);
  const auto second = startProcess(first.bundleID, 0.5F);
  controller_->addChannel(first, 0.5F, false, std::nullopt);
  EXPECT_EQ(heardAtBoth(), Both(0.375F, 0.0F));
  const auto third = startProcess(first.bundleID, 0.125F);
  EXPECT_EQ(heardAtBoth(), Both(0.4375F, 0.0F));
  EXPECT_THAT(report().objectIDs, ElementsAre(87U, second, third));
  EXPECT_THAT(controller_->peaks(), Contains(Pair(third, 0.875F)));
  controller_->setGain(1.0F, third);
  EXPECT_EQ(heardAtBoth(), Both(0.875F, 0.0F)) << "each of them names the session";

  audio_.removeProcess(87);
  EXPECT_EQ(heardAtBoth(), Both(0.625F, 0.0F));
  EXPECT_EQ(report().app.objectID, second) << "another one stands for the application";
  EXPECT_THAT(controller_->controlledAppIDs(), ElementsAre(second));
  audio_.setFixedStreams(third, {simulated::constantSignal(0.0F, 0.0F)});
  EXPECT_TRUE(report().isPartial);
  audio_.removeProcess(second);
  audio_.removeProcess(third);
  EXPECT_FALSE(report().exists);
  EXPECT_TRUE(audio_.isClean()) << "a session that changes nothing leaves nothing";
}

TEST_F(Following, AnApplicationThatRestartsIsNeverHeardWithoutItsSettings) {
  const auto app = playingApp(87);
  controller_->addChannel(app, 0.5F, false, "headset");
  executor_->runAll();
  audio_.removeProcess(87);
  EXPECT_FALSE(report().exists);
  EXPECT_THAT(audio_.aggregates(), IsEmpty());
  startProcess(app.bundleID, 0.5F);
  EXPECT_EQ(heard("speakers"), 0.0F) << "silent until it has its session";
  EXPECT_EQ(heardAtBoth(), Both(0.0F, 0.25F));
}

TEST_F(Following, KeptSettingsWaitForTheApplicationToPlay) {
  const auto process = startProcess("com.example.Player87", 0.5F, false);
  controller_->keepSettings("com.example.Player87", 0.25F, false, std::nullopt);
  controller_->keepSettings("com.example.Player88", 0.25F, true, std::nullopt);
  executor_->runAll();
  EXPECT_EQ(audio_.taps().size(), 2U);
  EXPECT_THAT(audio_.aggregates(), IsEmpty());
  audio_.setPlaying(process, true);
  EXPECT_EQ(heard("speakers"), 0.0F);
  EXPECT_EQ(heardAtBoth(), Both(0.125F, 0.0F));
  audio_.fail({.call = simulated::Call::deviceStop, .status = -50});
  controller_->removeChannel(process);
  controller_->keepSettings("com.example.Player87", 0.75F, false, std::nullopt);
  advance(2s);
  EXPECT_EQ(report().gain, 0.75F) << "kept although the session could not be ended at once";

  controller_->forgetSettings("com.example.Player88");
  EXPECT_EQ(audio_.taps().size(), 1U);
  controller_->keepSettings("com.example.Player88", 0.25F, false, std::nullopt);
  executor_->runAll();
  controller_->teardownAll();
  EXPECT_TRUE(audio_.isClean()) << "kept settings go with the sessions";
  startProcess("com.example.Player88", 0.25F);
  EXPECT_EQ(heardAtBoth(), Both(0.75F, 0.0F));
}

TEST_F(Following, AFailedMoveIsReportedHeardUnalteredAndTriedAgain) {
  controller_->addChannel(playingApp(87), 0.5F, false, std::nullopt);
  executor_->runAll();
  audio_.fail({.call = Call::createIOProcID, .status = -50});
  EXPECT_THROW(controller_->setOutput("headset", 87), HardwareError);
  EXPECT_FALSE(controller_->isControlled(87));
  EXPECT_EQ(heard("speakers"), 0.25F);
  EXPECT_EQ(reports_.begin()->second.error, "CreateIOProcID failed (OSStatus -50)");
  EXPECT_FALSE(reports_.begin()->second.exists);
  audio_.setDefaultDevice("headset");
  audio_.setDefaultDevice("speakers");
  executor_->runAll();
  EXPECT_FALSE(controller_->isControlled(87)) << "not at every change";
  advance(2s);
  EXPECT_EQ(heardAtBoth(), Both(0.0F, 0.125F));
  EXPECT_TRUE(report().exists);
  EXPECT_EQ(report().error, std::nullopt);
  EXPECT_EQ(clock_.pendingCount(), 0U);
}

TEST_F(Following, LosesNothingWhileTheAudioSystemCannotBeAsked) {
  controller_->addChannel(playingApp(87), 0.5F, false, std::nullopt);
  executor_->runAll();
  for (const auto call : {Call::getPropertyDataSize, Call::getPropertyData, Call::getPropertyText}) {
    failAlways(call);
    startProcess("com.example.Other", 0.0F);
    audio_.setDefaultDevice("headset");
    executor_->runAll();
    EXPECT_TRUE(controller_->isControlled(87));
    audio_.clearFailures();
    audio_.setDefaultDevice("speakers");
    EXPECT_EQ(heardAtBoth(), Both(0.125F, 0.0F));
  }
}

} // namespace
} // namespace sonvel
