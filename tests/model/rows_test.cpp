// How rows follow the applications that play, and their meters.

#include "model/model_test.h"

namespace sonvel {
namespace {

using simulated::Call;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using enum MixerStatus::Event;

using RowsTest = MixerTest;

TEST_F(RowsTest, HelpersShareTheRowOfTheFirstAndAreAllAudible) {
  openPanel();
  EXPECT_EQ(model_->status(), MixerStatus{.event = noAppsYet});
  const auto first = play("Browser Helper", "com.example.browser.helper");
  const auto second = play("Browser", "com.example.browser");
  passReconciliation();
  ASSERT_THAT(rowNames(), ElementsAre("Browser"));
  EXPECT_EQ(row("com.example.browser")->objectID(), first);
  EXPECT_THAT(MixerInspector::audibleIDs(*model_), UnorderedElementsAre(first, second));
}

TEST_F(RowsTest, WithoutPermissionRowsComeAndGoButNoTap) {
  consent_.setPreflight(1);
  const auto process = play("Player", "com.example.player");
  openPanel();
  EXPECT_EQ(model_->status(), (MixerStatus{.event = appsListed, .playing = 1}));
  audio_.setPlaying(process, false);
  passReconciliation();
  passReconciliation();
  EXPECT_EQ(model_->status(), (MixerStatus{.event = appsListed, .idle = 1}));
  EXPECT_EQ(calls(Call::createProcessTap), 0);
}

TEST_F(RowsTest, OneMissIsForgivenAndTwoPause) {
  const auto process = play("Player", "com.example.player");
  openPanel();
  auto* const player = row("com.example.player");
  model_->setGain(60, player);
  model_->setOutput(std::string("headset"), player);
  ASSERT_TRUE(settle());
  heard();
  passReconciliation();
  EXPECT_GT(player->level(), 0.0F);
  for (const bool isBackInTime : {true, false}) {
    audio_.clearLog();
    audio_.setPlaying(process, false);
    passReconciliation();
    EXPECT_EQ(std::tuple(player->isPlaying(), player->active()), std::tuple(true, true));
    if (isBackInTime) audio_.setPlaying(process, true);
    passReconciliation();
    EXPECT_EQ(std::tuple(player->isPlaying(), player->active()), std::tuple(isBackInTime, isBackInTime));
    EXPECT_EQ(calls(Call::destroyProcessTap), isBackInTime ? 0 : 1);
  }
  EXPECT_EQ(player->level(), 0.0F);
  EXPECT_EQ(remembered().at("com.example.player"), std::pair(60, false));
  EXPECT_TRUE(audio_.isClean());
  audio_.setPlaying(process, true);
  passReconciliation();
  EXPECT_EQ(row("com.example.player"), player);
  EXPECT_FLOAT_EQ(heard("headset"), 0.25F * 0.6F);
}

TEST_F(RowsTest, ANewRowTakesOverWhatIsRemembered) {
  play("Player", "com.example.player");
  openPanel();
  auto* const player = row("com.example.player");
  const auto held = player->shared_from_this();
  model_->dismissChannel(player);
  EXPECT_TRUE(remembered().empty());
  // A view that still holds the row may act on it once more.
  model_->setGain(60, player);
  passReconciliation();
  ASSERT_NE(row("com.example.player"), player);
  EXPECT_EQ(row("com.example.player")->gainPercent(), 60);
  EXPECT_FLOAT_EQ(heard(), 0.25F * 0.6F);
}

TEST_F(RowsTest, PlayingRowsComeFirstThenNamesInTheUsersOrder) {
  const auto zebra = play("zebra", "com.example.zebra");
  for (const std::string name : {"gamma", "Beta", "\u00C9clair", "alpha", "track 10", "track 9"})
    play(name, "com.example." + name);
  openPanel();
  EXPECT_THAT(rowNames(),
              ElementsAre("alpha", "Beta", "\u00C9clair", "gamma", "track 10", "track 9", "zebra"));
  for (const auto process : {row("com.example.alpha")->objectID(), row("com.example.Beta")->objectID()})
    audio_.setPlaying(process, false);
  passReconciliation();
  audio_.setPlaying(zebra, false);
  passReconciliation();
  EXPECT_THAT(rowNames(),
              ElementsAre("\u00C9clair", "gamma", "track 10", "track 9", "zebra", "alpha", "Beta"));
  EXPECT_EQ(model_->status(), (MixerStatus{.event = appsListed, .playing = 5, .idle = 2}));
}

TEST_F(RowsTest, ATapThatCanNotBeStartedIsToldInItsRowAndTriedAgain) {
  const auto process = play("Player", "com.example.player");
  audio_.fail({.call = Call::createAggregateDevice, .status = -50, .times = 2});
  openPanel(); // which reconciles twice
  const auto* const player = row("com.example.player");
  EXPECT_FALSE(player->active());
  EXPECT_EQ(player->lastError(), (CallFailure{"CreateAggregateDevice failed (OSStatus -50)", -50}));
  EXPECT_FLOAT_EQ(heard(), 0.25F);
  passReconciliation();
  EXPECT_TRUE(player->active());
  EXPECT_EQ(player->lastError(), std::nullopt);
  EXPECT_THAT(controlled(), ElementsAre(process));
}

TEST_F(RowsTest, EachTickDoesWhatIsDue) {
  play("Player", "com.example.player");
  openPanel();
  EXPECT_EQ(reads(property::kProcessObjectList), 2) << "at the opening and at tick 0";
  int metered = 0;
  QObject::connect(row("com.example.player"), &ChannelState::levelChanged, [&] { ++metered; });
  for (int tick = 1; tick <= 21; ++tick) {
    audio_.clearLog();
    metered = 0;
    passTicks(1);
    EXPECT_EQ(metered, 1) << tick;
    EXPECT_EQ(reads(property::kProcessObjectList), tick % 10 == 0 ? 1 : 0) << tick;
    EXPECT_EQ(reads(property::kDeviceVolumeScalar) > 0, tick % 5 == 0) << tick;
  }
}

TEST_F(RowsTest, TheMeterShowsTheApplicationBeforeItsGain) {
  const auto process = play("Player", "com.example.player");
  openPanel();
  model_->setGain(10, row("com.example.player"));
  for (const auto& [sample, level] : {std::pair(1.0F, 1.0F), std::pair(-0.0316227766F, 0.5F)}) {
    audio_.setSignal(process, simulated::constantSignal(0.0F, sample));
    heard();
    passTicks(1);
    EXPECT_NEAR(row("com.example.player")->level(), level, 1e-4F);
  }
}

TEST_F(RowsTest, TwelveSilentPollsOfAPlayingApplicationRebuildItsTap) {
  const auto process = play("Player", "com.example.player");
  play("Zither", "com.example.zither");
  openPanel();
  auto* const player = row("com.example.player");
  const auto setSample = [&](float sample) {
    audio_.setSignal(process, simulated::constantSignal(sample, sample));
    heard();
  };
  setSample(0.5F);
  passTicks(1);
  EXPECT_EQ(player->zeroStreak(), 0);
  setSample(0.0F);
  audio_.clearLog();
  passTicks(11);
  EXPECT_EQ(calls(Call::createProcessTap), 0);
  passTicks(1);
  EXPECT_EQ(calls(Call::createProcessTap), 1);
  EXPECT_EQ(player->zeroStreak(), 0);
  passTicks(11);
  setSample(0.5F);
  passTicks(1);
  EXPECT_EQ(calls(Call::createProcessTap), 1) << "it was heard in time";

  // One that has stopped gathers no silent polls.
  setSample(0.0F);
  audio_.setPlaying(process, false);
  passReconciliation();
  player->setZeroStreak(7);
  passTicks(1);
  EXPECT_EQ(player->zeroStreak(), 0);
}

TEST_F(RowsTest, TheMasterVolumeFollowsWhatIsMoreThanRounding) {
  struct Case {
    float device;
    double shown;
  };

  openPanel();
  for (const auto& [device, shown] :
       {Case{0.51F, 0.5}, Case{0.49F, 0.5}, Case{0.53F, 0.53}, Case{0.5F, 0.5}, Case{0.0F, 0.0}}) {
    EXPECT_TRUE(actor_->call([&](HardwareController& c) { return c.setMasterVolume(device); }).get());
    passTicks(5);
    EXPECT_NEAR(model_->masterVolume(), shown, 1e-6) << device;
  }
  model_->setMaster(0.25);
  passTicks(5);
  EXPECT_NEAR(actor_->call(&HardwareController::masterVolume).get().value_or(-1.0F), 0.25F, 1e-6);
  audio_.setDefaultDevice("headset");
  passTicks(5);
  EXPECT_EQ(std::pair(model_->masterSupported(), model_->masterVolume()), std::pair(false, 0.25));
  audio_.setDefaultDevice("speakers");
  passTicks(5);
  EXPECT_TRUE(model_->masterSupported());
}

} // namespace
} // namespace sonvel
