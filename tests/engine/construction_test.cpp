#include "engine/controller_test.h"

#include <cmath>

namespace sonvel {
namespace {

using simulated::Call;
using testing::ElementsAre;

class Construction : public ControllerTest {};

TEST_F(Construction, AsksTheSystemForWhatItNeeds) {
  addChannel(playingApp(87));

  ASSERT_EQ(audio_.taps().size(), 1U);
  const auto tap = audio_.taps().front();
  EXPECT_EQ(tap.description, (TapDescription{.processes = {87},
                                             .name = "SonvelTap-512",
                                             .isPrivate = true,
                                             .muteBehavior = TapMuteBehavior::muted}));
  ASSERT_EQ(audio_.aggregates().size(), 1U);
  auto aggregate = audio_.aggregates().front().description;
  EXPECT_EQ(std::exchange(aggregate.uid, "").size(), 36U);
  EXPECT_EQ(aggregate, (AggregateDeviceDescription{.name = "SonvelAgg-512",
                                                   .uid = "",
                                                   .mainSubDeviceUID = "speakers",
                                                   .isPrivate = true,
                                                   .isStacked = false,
                                                   .tapAutoStart = true,
                                                   .subDevices = {{"speakers"}},
                                                   .taps = {{.uid = tap.uid, .driftCompensation = true}}}));
  ASSERT_EQ(audio_.ioProcs().size(), 1U);
  EXPECT_EQ(audio_.ioProcs().front().queue,
            (IOQueue{"com.quellmarsh.sonvel.ioproc", QualityOfService::userInteractive}));
  EXPECT_THAT(changes(), ElementsAre(Call::createProcessTap, Call::createAggregateDevice,
                                     Call::createIOProcID, Call::deviceStart));
  EXPECT_THAT(controller_->controlledAppIDs(), ElementsAre(87U));
}

TEST_F(Construction, NamesAProcessWithoutPID) {
  addChannel(playingApp(87, 0.25F, 0));
  EXPECT_EQ(audio_.taps().front().description.name, "SonvelTap-0");
  EXPECT_EQ(audio_.aggregates().front().description.name, "SonvelAgg-0");
}

TEST_F(Construction, PlaysAtTheGainOnTheDeviceThatWasAskedFor) {
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

TEST_F(Construction, AFailingStepLeavesNothingBehind) {
  const struct {
    simulated::Failure failure;
    std::string error;
  } kCases[] = {
      {{.call = Call::createProcessTap, .status = -4}, "CreateProcessTap failed (OSStatus -4)"},
      {{.call = Call::createProcessTap, .status = kNoError}, "CreateProcessTap failed (OSStatus 0)"},
      {{.call = Call::getPropertyText, .status = -4, .selector = property::kTapUID},
       "tap UID failed (OSStatus -1)"},
      {{.call = Call::getPropertyText, .status = kNoError, .selector = property::kTapUID},
       "tap UID failed (OSStatus -1)"},
      {{.call = Call::getPropertyText, .status = -4, .selector = property::kDeviceUID},
       "output device failed (OSStatus -1)"},
      {{.call = Call::createAggregateDevice, .status = -50}, "CreateAggregateDevice failed (OSStatus -50)"},
      {{.call = Call::createAggregateDevice, .status = kNoError},
       "CreateAggregateDevice failed (OSStatus 0)"},
      {{.call = Call::createIOProcID, .status = -50}, "CreateIOProcID failed (OSStatus -50)"},
      {{.call = Call::createIOProcID, .status = kNoError}, "CreateIOProcID failed (OSStatus 0)"},
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
}

TEST_F(Construction, UndoesInReverseOrder) {
  audio_.fail({.call = Call::deviceStart});
  EXPECT_NE(errorOfAddChannel(playingApp(87)), "");
  EXPECT_THAT(changes(),
              ElementsAre(Call::createProcessTap, Call::createAggregateDevice, Call::createIOProcID,
                          Call::deviceStart, Call::deviceStop, Call::destroyIOProcID,
                          Call::destroyAggregateDevice, Call::destroyProcessTap));
}

TEST_F(Construction, NeedsADevice) {
  const auto app = playingApp(87);
  EXPECT_EQ(errorOfAddChannel(app, "unplugged"),
            HardwareError("CreateAggregateDevice", status::kBadDevice).description());
  audio_.setDefaultDevice(std::nullopt);
  EXPECT_EQ(errorOfAddChannel(app), "output device failed (OSStatus -1)");
  EXPECT_TRUE(audio_.isClean());
  EXPECT_EQ(errorOfAddChannel(app, "headset"), "");
}

TEST_F(Construction, AFailedUndoIsNeitherReportedNorRetried) {
  audio_.fail({.call = Call::createIOProcID, .status = -4});
  failAlways(Call::destroyAggregateDevice);
  EXPECT_EQ(errorOfAddChannel(playingApp(87)), "CreateIOProcID failed (OSStatus -4)");
  EXPECT_FALSE(controller_->isControlled(87));
  EXPECT_EQ(controller_->restorationFailure(), std::nullopt);
  EXPECT_EQ(clock_.pendingCount(), 0U);
}

TEST_F(Construction, RemovesTheFormerSessionFirst) {
  const auto app = playingApp(87);
  addChannel(app);
  const auto former = audio_.aggregates().front();
  audio_.clearLog();
  addChannel(app, "headset");

  EXPECT_THAT(changes(), ElementsAre(Call::deviceStop, Call::destroyIOProcID, Call::destroyAggregateDevice,
                                     Call::destroyProcessTap, Call::createProcessTap,
                                     Call::createAggregateDevice, Call::createIOProcID, Call::deviceStart));
  ASSERT_EQ(audio_.aggregates().size(), 1U);
  EXPECT_NE(audio_.aggregates().front().description.uid, former.description.uid);
}

TEST_F(Construction, KeepsAFormerSessionThatCannotBeRemoved) {
  const auto app = playingApp(87);
  addChannel(app);
  failAlways(Call::deviceStop);

  EXPECT_EQ(errorOfAddChannel(app, "headset"), "AudioDeviceStop (OSStatus -50) failed (OSStatus -1)");
  EXPECT_EQ(audio_.taps().size(), 1U);
  EXPECT_THAT(controller_->controlledAppIDs(), ElementsAre(87U));
  EXPECT_EQ(heard("speakers"), 0.25F);
  EXPECT_EQ(controller_->restorationFailure(),
            "Audio restoration for 87 is retrying: AudioDeviceStop (OSStatus -50)");
}

} // namespace
} // namespace sonvel
