// Building sessions, and changing them while they play.

#include "engine/controller_test.h"

#include <cmath>

namespace sonvel {
namespace {

using simulated::Call;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class Session : public ControllerTest {};

TEST_F(Session, AsksTheSystemForWhatItNeeds) {
  for (const std::int32_t pid : {512, 0}) {
    const auto app = playingApp(87, 0.25F, pid);
    addChannel(app);
    const auto tap = audio_.taps().at(0);
    EXPECT_EQ(tap.description, (TapDescription{.processes = {87},
                                               .bundleIDs = {"com.example.Player87"},
                                               .name = "SonvelTap-" + std::to_string(pid),
                                               .isPrivate = true,
                                               .muteBehavior = TapMuteBehavior::muted}));
    auto aggregate = audio_.aggregates().at(0).description;
    EXPECT_THAT(std::exchange(aggregate.uid, ""),
                testing::MatchesRegex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"));
    EXPECT_EQ(aggregate, (AggregateDeviceDescription{.name = "SonvelAgg-" + std::to_string(pid),
                                                     .uid = "",
                                                     .mainSubDeviceUID = "speakers",
                                                     .isPrivate = true,
                                                     .isStacked = false,
                                                     .tapAutoStart = true,
                                                     .subDevices = {{"speakers"}},
                                                     .taps = {{.uid = tap.uid, .driftCompensation = true}}}));
    EXPECT_EQ(audio_.ioProcs().at(0).queue,
              (IOQueue{"com.quellmarsh.sonvel.ioproc", QualityOfService::userInteractive}));
    EXPECT_THAT(changes(), ElementsAre(Call::createProcessTap, Call::createAggregateDevice,
                                       Call::createIOProcID, Call::deviceStart));
    controller_->teardownAll();
    audio_.removeProcess(87);
    audio_.clearLog();
  }
}

TEST_F(Session, PlaysAtTheGainOnTheDeviceThatWasAskedFor) {
  const auto app = playingApp(87, 0.25F);

  const struct {
    float gain;
    bool muted;
    std::optional<std::string> outputUID;
    float speakers, headset;
  } kCases[] = {
      {1.0F, false, std::nullopt, 0.25F, 0.0F}, {0.5F, false, "headset", 0.0F, 0.125F},
      {1.5F, true, "headset", 0.0F, 0.0F},      {3.0F, false, "speakers", 0.5F, 0.0F},
      {NAN, false, std::nullopt, 0.0F, 0.0F},   {-1.0F, false, std::nullopt, 0.0F, 0.0F},
  };

  for (const auto& [gain, muted, outputUID, speakers, headset] : kCases) {
    controller_->addChannel(app, gain, muted, outputUID);
    EXPECT_EQ(heard("speakers"), speakers) << gain;
    EXPECT_EQ(heard("headset"), headset) << gain;
    EXPECT_EQ(controller_->outputUID(87), outputUID);
  }
}

TEST_F(Session, SaysWhichStepFailedAndLeavesNothingBehind) {
  const struct {
    simulated::Failure failure;
    std::string error;
  } kCases[] = {
      {{.call = Call::createProcessTap, .status = -4}, "CreateProcessTap failed (OSStatus -4)"},
      {{.call = Call::createProcessTap, .status = kNoError}, "CreateProcessTap failed (OSStatus 0)"},
      {{.call = Call::getPropertyText, .status = kNoError, .selector = property::kTapUID},
       "tap UID failed (OSStatus -1)"},
      {{.call = Call::getPropertyText, .status = -4, .selector = property::kDeviceUID},
       "output device failed (OSStatus -1)"},
      {{.call = Call::deviceStart, .status = 1937010544}, "AudioDeviceStart failed (OSStatus 1937010544)"},
  };

  const auto app = playingApp(87);
  for (const auto& [failure, error] : kCases) {
    audio_.fail(failure);
    EXPECT_EQ(errorOfAddChannel(app), error);
    EXPECT_TRUE(audio_.isClean()) << error;
    EXPECT_FALSE(controller_->isControlled(87)) << error;
    EXPECT_EQ(heard("speakers"), 0.25F) << error;
  }
  EXPECT_EQ(clock_.pendingCount(), 0U);

  audio_.setDefaultDevice(std::nullopt);
  EXPECT_EQ(errorOfAddChannel(app), "output device failed (OSStatus -1)");
  audio_.fail({.call = Call::createIOProcID, .status = -4});
  failAlways(Call::destroyAggregateDevice);
  EXPECT_EQ(errorOfAddChannel(app, "headset"), "CreateIOProcID failed (OSStatus -4)");
  EXPECT_FALSE(controller_->restorationFailure()) << "a failed undo is not reported";
}

TEST_F(Session, IsReplacedStepByStepWithoutBeingHeardInBetween) {
  const auto app = playingApp(87);
  controller_->addChannel(app, 0.5F, false, "headset");
  EXPECT_EQ(heard("headset"), 0.125F);
  for (const auto& outputUID : {std::optional<std::string>("headset"), std::optional<std::string>()}) {
    const auto former = audio_.aggregates().front().description.uid;
    audio_.clearLog();
    float heardMeanwhile = 0.0F;
    audio_.setCallHook([&](Call call, AudioObjectID) {
      if (call == Call::createAggregateDevice) heardMeanwhile = heard("headset");
    });
    controller_->setOutput(outputUID, 87);
    audio_.setCallHook(nullptr);
    EXPECT_THAT(changes(), ElementsAre(Call::deviceStop, Call::destroyIOProcID, Call::destroyAggregateDevice,
                                       Call::destroyProcessTap, Call::createProcessTap,
                                       Call::createAggregateDevice, Call::createIOProcID, Call::deviceStart));
    EXPECT_EQ(heardMeanwhile, 0.125F);
    EXPECT_NE(audio_.aggregates().front().description.uid, former);
    EXPECT_EQ(controller_->metrics(87), ChannelMetrics{}) << "it starts anew";
    EXPECT_EQ(heard(outputUID.value_or("speakers")), 0.125F);
    EXPECT_EQ(controller_->outputUID(87), outputUID);
  }
}

TEST_F(Session, ChangesGainAndMuteWithoutACall) {
  addChannel(playingApp(87, 0.25F));
  audio_.clearLog();
  const auto expectAfter = [&](float expected, const char* what) {
    EXPECT_EQ(heard("speakers"), expected) << what;
  };
  expectAfter((controller_->setGain(2.5F, 87), 0.5F), "clamped");
  expectAfter((controller_->setMuted(true, 87), 0.0F), "muted");
  expectAfter((controller_->setGain(0.75F, 87), 0.0F), "a new gain does not unmute");
  expectAfter((controller_->setMuted(false, 87), 0.1875F), "with the new gain");
  EXPECT_THAT(audio_.log(), IsEmpty());

  controller_->setGain(0.5F, 88);
  controller_->setMuted(true, 88);
  controller_->setOutput("headset", 88);
  controller_->rebuild(88);
  EXPECT_THAT(audio_.log(), IsEmpty()) << "an application without a session is ignored";
  EXPECT_EQ(controller_->metrics(88), std::nullopt);
}

TEST_F(Session, IsMeteredBeforeGainAndMuteAndFallsWithItsApplication) {
  addChannel(playingApp(12, -0.25F));
  addChannel(playingApp(45, 0.5F));
  controller_->setMuted(true, 45);
  EXPECT_THAT(controller_->peaks(), ElementsAre(Pair(12U, 0.0F), Pair(45U, 0.0F)));
  audio_.runCycle();
  audio_.runCycle();
  EXPECT_THAT(controller_->peaks(), ElementsAre(Pair(12U, 0.25F), Pair(45U, 0.5F)));
  EXPECT_EQ(controller_->metrics(45), (ChannelMetrics{.inPeak = 0.5F, .cycles = 2, .outBufs = 1}));
  executor_->runAll();
  audio_.setPlaying(45, false); // then the device stops calling the block
  executor_->runAll();
  EXPECT_THAT(controller_->peaks(), ElementsAre(Pair(12U, 0.25F), Pair(45U, 0.0F)));
}

} // namespace
} // namespace sonvel
