#include "model/model_test.h"

namespace sonvel {
namespace {

using simulated::Call;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using ReconciliationTest = MixerTest;

TEST_F(ReconciliationTest, SaysThatNothingHasPlayedYet) {
  openPanel();
  EXPECT_EQ(model_->status(), "No apps have played audio yet.");
  EXPECT_THAT(MixerInspector::audibleIDs(*model_), IsEmpty());
}

TEST_F(ReconciliationTest, ANewApplicationGetsARowAndItsTap) {
  const auto process = play("Player", "com.example.player");
  openPanel();
  const auto* const player = row("com.example.player");
  ASSERT_NE(player, nullptr);
  EXPECT_EQ(std::tuple(player->gainPercent(), player->muted(), player->active(), player->isPlaying()),
            std::tuple(100, false, true, true));
  EXPECT_EQ(player->objectID(), process);
  EXPECT_EQ(player->lastError(), std::nullopt);
  EXPECT_THAT(controlled(), ElementsAre(process));
  EXPECT_FLOAT_EQ(heard(), 0.25F);
  EXPECT_EQ(model_->status(), "1 playing");
}

TEST_F(ReconciliationTest, HelpersShareTheRowOfTheFirstAndAreAllAudible) {
  const auto first = play("Browser Helper", "com.example.browser.helper");
  const auto second = play("Browser", "com.example.browser");
  const auto third = play("Browser Helper", "com.example.browser.helper.renderer");
  openPanel();
  ASSERT_EQ(model_->channels()->rowCount(), 1);
  EXPECT_EQ(row("com.example.browser")->objectID(), first);
  EXPECT_THAT(controlled(), ElementsAre(first));
  EXPECT_THAT(MixerInspector::audibleIDs(*model_), UnorderedElementsAre(first, second, third));
}

TEST_F(ReconciliationTest, WithoutPermissionRowsComeAndGoButNoTap) {
  consent_.setPreflight(1);
  const auto process = play("Player", "com.example.player");
  openPanel();
  EXPECT_FALSE(row("com.example.player")->active());
  EXPECT_EQ(model_->status(), "1 playing");
  audio_.setPlaying(process, false);
  passReconciliation();
  passReconciliation();
  EXPECT_EQ(model_->status(), QString::fromUtf8("0 playing \u00B7 1 idle"));
  EXPECT_EQ(calls(Call::createProcessTap), 0);
}

TEST_F(ReconciliationTest, OneMissIsForgivenAndTwoPause) {
  const auto process = play("Player", "com.example.player");
  openPanel();
  auto* const player = row("com.example.player");
  model_->setGain(60, player);
  model_->toggleMute(player);
  model_->setOutput(std::string("headset"), player);
  ASSERT_TRUE(settle());
  heard();
  passReconciliation();
  audio_.clearLog();

  audio_.setPlaying(process, false);
  passReconciliation();
  EXPECT_EQ(std::tuple(player->isPlaying(), player->active(), player->idleTicks()),
            std::tuple(true, true, 1));
  audio_.setPlaying(process, true);
  passReconciliation();
  EXPECT_EQ(player->idleTicks(), 0);
  EXPECT_EQ(calls(Call::destroyProcessTap), 0) << "the tap was kept";

  audio_.setPlaying(process, false);
  passReconciliation();
  passReconciliation();
  EXPECT_EQ(std::tuple(player->isPlaying(), player->active(), player->level()),
            std::tuple(false, false, 0.0F));
  EXPECT_EQ(remembered().at("com.example.player"), std::pair(60, true));
  EXPECT_TRUE(audio_.isClean());
  passReconciliation();
  EXPECT_EQ(player->idleTicks(), 2) << "a paused row is left alone";

  model_->toggleMute(player);
  audio_.setPlaying(process, true);
  passReconciliation();
  EXPECT_EQ(row("com.example.player"), player);
  EXPECT_EQ(std::tuple(player->isPlaying(), player->active(), player->idleTicks()),
            std::tuple(true, true, 0));
  EXPECT_FLOAT_EQ(heard("headset"), 0.25F * 0.6F);
}

TEST_F(ReconciliationTest, ANewRowTakesOverWhatIsRemembered) {
  play("Player", "com.example.player");
  openPanel();
  auto* const player = row("com.example.player");
  const auto held = player->shared_from_this();
  model_->dismissChannel(player);
  EXPECT_THAT(remembered(), IsEmpty());
  // A view that still holds the row may act on it once more.
  model_->setGain(60, player);
  held->setActive(false);
  model_->toggleMute(player);
  passReconciliation();
  ASSERT_NE(row("com.example.player"), player);
  EXPECT_EQ(row("com.example.player")->gainPercent(), 60);
  EXPECT_TRUE(row("com.example.player")->muted());
  EXPECT_EQ(heard(), 0.0F);
}

TEST_F(ReconciliationTest, AnotherProcessOfTheKeyTakesTheRowOver) {
  const auto process = play("Player", "com.example.player");
  openPanel();
  const auto restarted = restart(process, "Player", "com.example.player");
  passReconciliation();
  const auto* const player = row("com.example.player");
  EXPECT_EQ(player->objectID(), restarted);
  EXPECT_TRUE(player->active());
  EXPECT_EQ(calls(Call::createProcessTap), 1) << "while the row is active no tap is started for it";

  // The same process with another name is not another process.
  applications_.addApplication(
      {.processID = player->app().pid, .bundleIdentifier = "com.example.player", .localizedName = "Renamed"});
  passReconciliation();
  EXPECT_EQ(player->app().name, "Player");
}

TEST_F(ReconciliationTest, PlayingRowsComeFirstThenNamesInTheUsersOrder) {
  const auto zebra = play("zebra", "com.example.zebra");
  play("gamma", "com.example.gamma");
  play("Beta", "com.example.beta");
  play("\u00C9clair", "com.example.eclair");
  play("alpha", "com.example.alpha");
  play("track 10", "com.example.track10");
  play("track 9", "com.example.track9");
  play("same", "com.example.same1");
  play("Same", "com.example.same2");
  openPanel();
  EXPECT_THAT(rowNames(), ElementsAre("alpha", "Beta", "\u00C9clair", "gamma", "same", "Same", "track 10",
                                      "track 9", "zebra"));
  EXPECT_EQ(model_->status(), "9 playing");
  for (const std::string key : {"com.example.alpha", "com.example.beta"})
    audio_.setPlaying(row(key)->objectID(), false);
  passReconciliation();
  audio_.setPlaying(zebra, false);
  passReconciliation();
  EXPECT_THAT(rowNames(), ElementsAre("\u00C9clair", "gamma", "same", "Same", "track 10", "track 9", "zebra",
                                      "alpha", "Beta"));
  EXPECT_EQ(model_->status(), QString::fromUtf8("7 playing \u00B7 2 idle"));
}

TEST_F(ReconciliationTest, ATapThatCanNotBeStartedIsToldInItsRowAndTriedAgain) {
  const auto process = play("Player", "com.example.player");
  audio_.fail({.call = Call::createAggregateDevice, .status = -50, .times = 2});
  openPanel(); // which reconciles twice
  const auto* const player = row("com.example.player");
  EXPECT_EQ(std::tuple(player->isPlaying(), player->active()), std::tuple(true, false));
  EXPECT_EQ(player->lastError(), "CreateAggregateDevice failed (OSStatus -50)");
  EXPECT_FLOAT_EQ(heard(), 0.25F);
  passReconciliation();
  EXPECT_TRUE(player->active());
  EXPECT_EQ(player->lastError(), std::nullopt);
  EXPECT_THAT(controlled(), ElementsAre(process));
}

} // namespace
} // namespace sonvel
