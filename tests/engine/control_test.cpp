#include "engine/controller_test.h"

namespace sonvel {
namespace {

using simulated::Call;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class Control : public ControllerTest {};

TEST_F(Control, ChangesGainAndMuteWhileItPlays) {
  addChannel(playingApp(87, 0.25F));
  audio_.clearLog();

  controller_->setGain(0.5F, 87);
  EXPECT_EQ(heard("speakers"), 0.125F);
  controller_->setGain(2.5F, 87);
  EXPECT_EQ(heard("speakers"), 0.5F);
  controller_->setMuted(true, 87);
  EXPECT_EQ(heard("speakers"), 0.0F);
  controller_->setGain(0.75F, 87);
  EXPECT_EQ(heard("speakers"), 0.0F) << "a new gain does not unmute";
  controller_->setMuted(false, 87);
  EXPECT_EQ(heard("speakers"), 0.1875F);
  controller_->setGain(-1.0F, 87);
  EXPECT_EQ(heard("speakers"), 0.0F);
  EXPECT_THAT(audio_.log(), IsEmpty());
}

TEST_F(Control, IgnoresAnApplicationWithoutSession) {
  controller_->setGain(0.5F, 87);
  controller_->setMuted(true, 87);
  controller_->setOutput("headset", 87);
  controller_->rebuild(87);
  EXPECT_THAT(audio_.log(), IsEmpty());
  EXPECT_FALSE(controller_->isControlled(87));
  EXPECT_EQ(controller_->outputUID(87), std::nullopt);
  EXPECT_EQ(controller_->metrics(87), std::nullopt);
  EXPECT_THAT(controller_->peaks(), IsEmpty());
}

TEST_F(Control, MovesToAnotherDeviceWithGainAndMuteUnchanged) {
  addChannel(playingApp(87, 0.25F));
  controller_->setGain(0.5F, 87);
  EXPECT_EQ(heard("speakers"), 0.125F);

  controller_->setOutput("headset", 87);
  EXPECT_EQ(controller_->metrics(87), ChannelMetrics{}) << "it starts anew";
  EXPECT_EQ(heard("headset"), 0.125F);
  EXPECT_EQ(heard("speakers"), 0.0F);
  EXPECT_EQ(controller_->outputUID(87), "headset");

  controller_->setMuted(true, 87);
  controller_->setOutput(std::nullopt, 87);
  EXPECT_EQ(heard("speakers"), 0.0F);
  EXPECT_EQ(controller_->outputUID(87), std::nullopt);
  controller_->setMuted(false, 87);
  EXPECT_EQ(heard("speakers"), 0.125F);
}

TEST_F(Control, BuildsAnewOnTheSameDeviceToo) {
  addChannel(playingApp(87), "headset");
  const auto former = audio_.aggregates().front().description.uid;
  controller_->setOutput("headset", 87);
  EXPECT_NE(audio_.aggregates().front().description.uid, former);
}

TEST_F(Control, RebuildingFollowsTheDefaultDeviceUnlessOneWasAskedFor) {
  addChannel(playingApp(12, 0.25F));
  addChannel(playingApp(45, 0.5F), "speakers");
  audio_.setDefaultDevice("headset");
  EXPECT_EQ(heard("speakers"), 0.75F);

  controller_->rebuild(12);
  controller_->rebuild(45);
  EXPECT_EQ(heard("headset"), 0.25F);
  EXPECT_EQ(heard("speakers"), 0.5F);
}

TEST_F(Control, AFailedRebuildGivesTheApplicationBack) {
  addChannel(playingApp(87, 0.25F), "headset");
  controller_->setGain(0.5F, 87);
  audio_.fail({.call = Call::createAggregateDevice, .status = -50});
  EXPECT_THROW(controller_->rebuild(87), HardwareError);
  EXPECT_FALSE(controller_->isControlled(87));
  EXPECT_EQ(heard("speakers"), 0.25F);
}

TEST_F(Control, MetersWhatTheApplicationPlays) {
  addChannel(playingApp(12, -0.25F));
  addChannel(playingApp(45, 0.5F));
  controller_->setMuted(true, 45);
  EXPECT_THAT(controller_->peaks(), ElementsAre(Pair(12U, 0.0F), Pair(45U, 0.0F)));

  audio_.runCycle();
  audio_.runCycle();
  EXPECT_THAT(controller_->peaks(), ElementsAre(Pair(12U, 0.25F), Pair(45U, 0.5F)));
  EXPECT_EQ(controller_->metrics(45), (ChannelMetrics{.inPeak = 0.5F, .cycles = 2, .outBufs = 1}));
  EXPECT_THAT(controller_->controlledAppIDs(), testing::UnorderedElementsAre(12U, 45U));
}

TEST_F(Control, ReachesTheAudioSystem) {
  playingApp(12);
  addChannel(playingApp(45, 0.5F, 513));
  EXPECT_EQ(controller_->audibleApps().size(), 2U);
  EXPECT_THAT(controller_->audibleObjectIDs(), ElementsAre(12U, 45U));
  EXPECT_EQ(controller_->outputDevices().size(), 2U) << "without the channel's own aggregate device";
  EXPECT_TRUE(controller_->setMasterVolume(0.75F));
  EXPECT_EQ(controller_->masterVolume(), 0.75F);
}

} // namespace
} // namespace sonvel
