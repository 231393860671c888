#include "model/model_test.h"

namespace sonvel {
namespace {

using simulated::Call;

class PollingTest : public MixerTest {
 protected:
  /// A row that plays and is heard by its meter.
  ChannelState* openWithPlayer(float sample = 0.25F) {
    process_ = play("Player", "com.example.player", sample);
    openPanel();
    heard();
    return row("com.example.player");
  }

  AudioObjectID process_ = kAudioObjectUnknown;
};

TEST_F(PollingTest, EachTickDoesWhatIsDue) {
  auto* const player = openWithPlayer();
  EXPECT_EQ(reads(property::kProcessObjectList), 2) << "at the opening and at tick 0";
  int metered = 0;
  QObject::connect(player, &ChannelState::levelChanged, [&] { ++metered; });
  for (int tick = 1; tick <= 21; ++tick) {
    audio_.clearLog();
    metered = 0;
    passTicks(1);
    EXPECT_EQ(metered, 1) << tick;
    EXPECT_EQ(reads(property::kProcessObjectList), tick % 10 == 0 ? 1 : 0) << tick;
    EXPECT_EQ(reads(property::kDeviceVolumeScalar) > 0, tick % 5 == 0) << tick;
  }
}

TEST_F(PollingTest, TheMeterShowsTheApplicationBeforeItsGain) {
  auto* const player = openWithPlayer(1.0F);
  model_->setGain(10, player);
  passTicks(1);
  EXPECT_FLOAT_EQ(player->level(), 1.0F);
  audio_.setSignal(process_, simulated::constantSignal(0.0F, -0.0316227766F));
  heard();
  passTicks(1);
  EXPECT_NEAR(player->level(), 0.5F, 1e-4F);
}

TEST_F(PollingTest, ARowThatIsNotActiveIsLeftAsItIs) {
  audio_.fail({.call = Call::createProcessTap, .times = std::nullopt});
  auto* const player = openWithPlayer();
  player->setLevel(0.5F);
  player->setZeroStreak(5);
  passTicks(15);
  EXPECT_EQ(player->level(), 0.5F);
  EXPECT_EQ(player->zeroStreak(), 5);
}

TEST_F(PollingTest, TwelveSilentPollsOfAPlayingApplicationRebuildItsTapOnce) {
  auto* const player = openWithPlayer();
  audio_.setSignal(process_, simulated::constantSignal(0.0F, 0.0F));
  heard();
  player->setZeroStreak(0);
  audio_.clearLog();
  passTicks(11);
  EXPECT_EQ(player->zeroStreak(), 11);
  EXPECT_EQ(calls(Call::createProcessTap), 0);
  passTicks(1);
  EXPECT_EQ(player->zeroStreak(), 0);
  EXPECT_EQ(calls(Call::createProcessTap), 1);
  EXPECT_TRUE(player->active());

  passTicks(11);
  audio_.setSignal(process_, simulated::constantSignal(0.5F, 0.5F));
  heard();
  passTicks(1);
  EXPECT_EQ(player->zeroStreak(), 0);
  EXPECT_EQ(calls(Call::createProcessTap), 1);
}

TEST_F(PollingTest, AFailedRebuildIsTriedAgainAsManySilentPollsLater) {
  auto* const player = openWithPlayer();
  const auto other = play("Zither", "com.example.zither");
  passReconciliation();
  audio_.setSignal(process_, simulated::constantSignal(0.0F, 0.0F));
  heard();
  passTicks(1);
  player->setZeroStreak(11);
  audio_.fail({.call = Call::createProcessTap, .status = -50});
  passTicks(1);
  EXPECT_EQ(player->zeroStreak(), 0);
  EXPECT_EQ(player->lastError(), std::nullopt);
  EXPECT_GT(row("com.example.zither")->level(), 0.0F) << "the rows behind it go on";
  EXPECT_THAT(controlled(), testing::ElementsAre(other));
}

TEST_F(PollingTest, AnApplicationThatHasStoppedGathersNoSilentPolls) {
  auto* const player = openWithPlayer();
  audio_.setPlaying(process_, false);
  heard();
  passReconciliation();
  player->setZeroStreak(7);
  passTicks(1);
  EXPECT_TRUE(player->active());
  EXPECT_EQ(player->level(), 0.0F);
  EXPECT_EQ(player->zeroStreak(), 0);
}

TEST_F(PollingTest, TheMasterVolumeFollowsWhatIsMoreThanRounding) {
  struct Case {
    float device;
    double shown;
  };

  openPanel();
  EXPECT_EQ(model_->masterVolume(), 0.5);
  for (const auto& [device, shown] :
       {Case{0.51F, 0.5}, Case{0.49F, 0.5}, Case{0.53F, 0.53}, Case{0.5F, 0.5}, Case{0.0F, 0.0}}) {
    EXPECT_TRUE(actor_->call([&](HardwareController& c) { return c.setMasterVolume(device); }).get());
    passTicks(5);
    EXPECT_NEAR(model_->masterVolume(), shown, 1e-6) << device;
  }
  model_->setMaster(0.25);
  audio_.setDefaultDevice("headset");
  passTicks(5);
  EXPECT_FALSE(model_->masterSupported());
  EXPECT_EQ(model_->masterVolume(), 0.25);
  audio_.setDefaultDevice("speakers");
  passTicks(5);
  EXPECT_TRUE(model_->masterSupported());
}

TEST_F(PollingTest, OpeningAgainLeavesOneLoop) {
  openPanel();
  openPanel();
  openPanel();
  EXPECT_EQ(clock_.pendingCount(), 2U) << "the loop's sleep and the permission monitor's";
  audio_.clearLog();
  passReconciliation();
  EXPECT_EQ(reads(property::kProcessObjectList), 1);
}

} // namespace
} // namespace sonvel
