// The rows while the panel is open: reconciliations and polls, and when each is due.

#include "model/model_test.h"

namespace sonvel {
namespace {

using simulated::Call;

class RowsTest : public MixerTest {
 protected:
  /// "Player" plays, and the panel is open.
  ChannelState* openWithPlayer() {
    process_ = play("Player", "com.example.player");
    openPanel();
    return row("com.example.player");
  }

  AudioObjectID process_ = kAudioObjectUnknown;
};

TEST_F(RowsTest, OneMissIsForgivenAndTwoPause) {
  auto* const player = openWithPlayer();
  model_->setGain(60, player);
  model_->setOutput(std::string("headset"), player);
  ASSERT_TRUE(settle());
  for (const bool isBackInTime : {true, false}) {
    audio_.clearLog();
    audio_.setPlaying(process_, false);
    passReconciliation();
    EXPECT_TRUE(player->isPlaying() && player->active());
    if (isBackInTime) audio_.setPlaying(process_, true);
    passReconciliation();
    EXPECT_EQ(std::pair(player->isPlaying(), player->active()), std::pair(isBackInTime, isBackInTime));
    EXPECT_EQ(calls(Call::destroyProcessTap), isBackInTime ? 0 : 1);
  }
  EXPECT_EQ(remembered().at("com.example.player"), std::pair(60, false));
  audio_.setPlaying(process_, true);
  passReconciliation();
  EXPECT_EQ(row("com.example.player"), player);
  EXPECT_FLOAT_EQ(heard("headset"), 0.25F * 0.6F);
}

TEST_F(RowsTest, AFailedStartOrChangeOfRouteIsToldInItsRowAndTriedAgain) {
  audio_.fail({.call = Call::createAggregateDevice, .status = -50, .times = 2});
  auto* const player = openWithPlayer(); // reconciles twice
  for (const bool isMoved : {false, true}) {
    if (isMoved) audio_.fail({.call = Call::createAggregateDevice, .status = -50});
    if (isMoved) model_->setOutput(std::string("headset"), player);
    ASSERT_TRUE(settle());
    EXPECT_FALSE(player->active());
    EXPECT_EQ(player->lastError(), (CallFailure{"CreateAggregateDevice failed (OSStatus -50)", -50}));
    passReconciliation();
    EXPECT_TRUE(player->active());
    EXPECT_EQ(player->lastError(), std::nullopt);
  }
  EXPECT_FLOAT_EQ(heard("headset"), 0.25F);
}

TEST_F(RowsTest, WhatIsSetHoldsWhileThePanelIsClosedAndIsShown) {
  auto* const player = openWithPlayer();
  audio_.setPlaying(process_, false);
  passReconciliation();
  passReconciliation();
  model_->setGain(50, player);
  model_->setOutput(std::string("headset"), player);
  model_->onDisappear();
  audio_.setPlaying(process_, true);
  ASSERT_TRUE(settle());
  EXPECT_TRUE(player->isPlaying() && player->active());
  EXPECT_FLOAT_EQ(heard("headset"), 0.125F);

  audio_.removeProcess(process_);
  ASSERT_TRUE(settle());
  EXPECT_FALSE(player->active());
  process_ = play("Player", "com.example.player");
  audio_.removeDevice("headset");
  ASSERT_TRUE(settle());
  EXPECT_EQ(player->objectID(), process_);
  EXPECT_EQ(model_->outputDevices().size(), 1U);
  EXPECT_EQ(player->outputUID(), "headset");
  EXPECT_EQ(player->playback(), (ChannelState::Playback{{process_}, "speakers", false, false}));
  EXPECT_FLOAT_EQ(heard(), 0.125F);
  (void)audio_.returnDevice("headset");
  model_->setGain(200, player);
  ASSERT_TRUE(settle());
  EXPECT_FLOAT_EQ(heard("headset"), 0.5F);

  model_->dismissChannel(player);
  audio_.removeProcess(process_);
  play("Player", "com.example.player");
  ASSERT_TRUE(settle());
  EXPECT_FLOAT_EQ(heard(), 0.25F) << "what was set for a removed row is forgotten";
}

TEST_F(RowsTest, APausedRowWhoseSessionCanNotBeEndedStaysPausedAndSaysSo) {
  auto* const player = openWithPlayer();
  audio_.fail({.call = Call::destroyProcessTap, .status = -50});
  audio_.setPlaying(process_, false);
  passReconciliation();
  passReconciliation();
  EXPECT_FALSE(player->isPlaying());
  EXPECT_EQ(player->lastError(), CallFailure{"AudioHardwareDestroyProcessTap (OSStatus -50)"});
  model_->setGain(50, player);
  pass(2s);
  EXPECT_FALSE(player->active());
  EXPECT_EQ(player->lastError(), std::nullopt);
  audio_.setPlaying(process_, true);
  ASSERT_TRUE(settle());
  EXPECT_FLOAT_EQ(heard(), 0.125F);
}

TEST_F(RowsTest, EachTickDoesWhatIsDue) {
  int metered = 0;
  QObject::connect(openWithPlayer(), &ChannelState::levelChanged, [&] { ++metered; });
  for (int tick = 1; tick <= 21; ++tick) {
    heard(); // otherwise the silent tap would be rebuilt
    audio_.clearLog();
    passTicks(1);
    EXPECT_EQ(metered, tick);
    EXPECT_EQ(calls(Call::getPropertyData, property::kProcessPID) > 0, tick % 10 == 0) << tick;
    EXPECT_EQ(calls(Call::getPropertyData, property::kDeviceVolumeScalar) > 0, tick % 5 == 0) << tick;
  }
}

TEST_F(RowsTest, TwelveSilentPollsOfAPlayingApplicationRebuildItsTap) {
  openWithPlayer();
  for (const auto& [sample, isPlaying, polls, rebuilt] : {std::tuple(0.5F, true, 1, 0L),
                                                          {0.0F, true, 11, 0},
                                                          {0.0F, true, 1, 1},
                                                          {0.0F, true, 11, 0},
                                                          {0.5F, true, 1, 0},
                                                          {0.0F, false, 12, 0}}) {
    audio_.clearLog();
    audio_.setSignal(process_, simulated::constantSignal(sample, sample));
    heard();
    audio_.setPlaying(process_, isPlaying);
    if (!isPlaying) openPanel(); // reconciles, so that the application is known
    passTicks(polls);
    EXPECT_EQ(calls(Call::createProcessTap), rebuilt) << sample << isPlaying;
  }
  audio_.setFixedStreams(process_, {simulated::constantSignal(0.5F, 0.5F)});
  audio_.setPlaying(process_, true);
  openPanel();
  audio_.clearLog();
  passTicks(13);
  EXPECT_EQ(calls(Call::createProcessTap), 0) << "what plays is not under its control";
}

TEST_F(RowsTest, TheMasterVolumeFollowsWhatIsMoreThanRounding) {
  openPanel();
  for (const auto& [device, shown] :
       {std::pair(0.51F, 0.5), std::pair(0.49F, 0.5), std::pair(0.53F, 0.53), std::pair(0.0F, 0.0)}) {
    EXPECT_TRUE(actor_->call([&](HardwareController& c) { return c.setMasterVolume(device); }).get());
    passTicks(5);
    EXPECT_NEAR(model_->masterVolume(), shown, 1e-6) << device;
  }
  model_->setMaster(0.25);
  passTicks(5);
  EXPECT_FLOAT_EQ(actor_->call(&HardwareController::masterVolume).get().value_or(-1.0F), 0.25F);
  audio_.setDefaultDevice("headset");
  passTicks(5);
  EXPECT_EQ(std::pair(model_->masterSupported(), model_->masterVolume()), std::pair(false, 0.25));
}

} // namespace
} // namespace sonvel
