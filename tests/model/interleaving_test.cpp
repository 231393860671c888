// What happens between two awaits.

#include "model/model_test.h"

namespace sonvel {
namespace {

using simulated::Call;
using testing::ElementsAre;
using testing::IsEmpty;

class InterleavingTest : public MixerTest {
 protected:
  /// Opens the panel and stops where the first tap is about to be created.
  void openUntilHeld(HeldCall& held) {
    model_->onAppear();
    ASSERT_TRUE(pumpUntil([&] { return held.isHeld(); }));
  }

  void release(HeldCall& held) {
    held.release();
    ASSERT_TRUE(settle());
  }
};

TEST_F(InterleavingTest, TwoBootstrapsMakeOneRowOfEach) {
  std::vector<AudioObjectID> played;
  for (const std::string name : {"Alpha", "Beta", "Gamma", "Delta"})
    played.push_back(play(name, "com.example." + name));
  model_->onAppear();
  model_->onDisappear();
  model_->onAppear();
  model_->requestPermission();
  consent_.answer(true);
  ASSERT_TRUE(settle());
  EXPECT_THAT(rowNames(), ElementsAre("Alpha", "Beta", "Delta", "Gamma"));
  EXPECT_EQ(controlled(), played);
  EXPECT_EQ(audio_.taps().size(), 4U);
}

TEST_F(InterleavingTest, WhatTheUserChangesWhileATapIsStartedIsHeard) {
  play("Player", "com.example.player");
  HeldCall held(audio_, {.call = Call::createProcessTap});
  openUntilHeld(held);
  auto* const player = row("com.example.player");
  EXPECT_FALSE(player->active());
  model_->setGain(50, player);
  model_->toggleMute(player);
  model_->toggleMute(player);
  model_->setOutput(std::string("headset"), player);
  release(held);
  EXPECT_TRUE(player->active());
  EXPECT_FLOAT_EQ(heard("headset"), 0.125F);
  EXPECT_EQ(heard(), 0.0F);
  model_->toggleMute(player);
  ASSERT_TRUE(settle());
  EXPECT_EQ(heard("headset"), 0.0F);
}

TEST_F(InterleavingTest, ARowDismissedWhileItsTapIsStartedLeavesNoTap) {
  play("Player", "com.example.player");
  HeldCall held(audio_, {.call = Call::createProcessTap});
  openUntilHeld(held);
  model_->onDisappear();
  model_->dismissChannel(row("com.example.player"));
  release(held);
  EXPECT_THAT(rowNames(), IsEmpty());
  EXPECT_TRUE(audio_.isClean());
  EXPECT_FLOAT_EQ(heard(), 0.25F);
}

TEST_F(InterleavingTest, ARowDismissedAndMadeAnewWhileItsTapIsStartedKeepsTheNewTap) {
  const auto alpha = play("Alpha", "com.example.alpha");
  const auto beta = play("Beta", "com.example.beta");
  // Of two reconciliations the first is starting Beta when the second is still at Alpha.
  HeldCall held(audio_, {.call = Call::createProcessTap, .after = 1});
  model_->onAppear();
  openUntilHeld(held);
  pump();
  model_->dismissChannel(row("com.example.beta"));
  release(held);
  EXPECT_TRUE(row("com.example.beta")->active());
  EXPECT_THAT(controlled(), ElementsAre(alpha, beta));
}

TEST_F(InterleavingTest, ARowDismissedDuringAReconciliationIsNewToTheNext) {
  const auto alpha = play("Alpha", "com.example.alpha");
  play("Beta", "com.example.beta");
  consent_.setPreflight(1);
  openPanel();
  model_->onDisappear();
  model_->setGain(50, row("com.example.beta"));

  consent_.setPreflight(0);
  HeldCall held(audio_, {.call = Call::createProcessTap});
  openUntilHeld(held); // at Alpha; Beta is next
  model_->onDisappear();
  model_->dismissChannel(row("com.example.beta"));
  release(held);
  EXPECT_THAT(rowNames(), ElementsAre("Alpha"));
  EXPECT_THAT(controlled(), ElementsAre(alpha));
  openPanel();
  EXPECT_EQ(row("com.example.beta")->gainPercent(), 100);
}

TEST_F(InterleavingTest, ADismissedRowIsNotRememberedByThePauseThatIsUnderWay) {
  const auto alpha = play("Alpha", "com.example.alpha");
  const auto beta = play("Beta", "com.example.beta");
  openPanel();
  audio_.removeProcess(alpha);
  audio_.removeProcess(beta);
  passReconciliation();
  HeldCall held(audio_, {.call = Call::deviceStop});
  passTicks(kReconciliationTicks - 1);
  clock_.advance(kTick);
  ASSERT_TRUE(pumpUntil([&] { return held.isHeld(); })); // Alpha is being paused; Beta is next
  model_->dismissChannel(row("com.example.beta"));
  release(held);
  EXPECT_THAT(rowNames(), ElementsAre("Alpha"));
  EXPECT_THAT(remembered(), ElementsAre(testing::Pair("com.example.alpha", std::pair(100, false))));
  EXPECT_TRUE(audio_.isClean());
}

TEST_F(InterleavingTest, TheMeterOfARowThatIsBeingPausedStaysDown) {
  const auto process = play("Player", "com.example.player");
  openPanel();
  heard();
  audio_.setPlaying(process, false);
  passReconciliation();
  EXPECT_GT(row("com.example.player")->level(), 0.0F);
  // The meters are asked for between the list of what plays and the removal that follows from it.
  HeldCall held(audio_, {.call = Call::getPropertyData, .object = process});
  openUntilHeld(held);
  clock_.advance(kTick);
  pump();
  release(held);
  EXPECT_FALSE(row("com.example.player")->isPlaying());
  EXPECT_EQ(row("com.example.player")->level(), 0.0F);
}

TEST_F(InterleavingTest, ARowDismissedWhileItIsMovedIsGivenBack) {
  play("Player", "com.example.player");
  openPanel();
  model_->onDisappear();
  HeldCall held(audio_, {.call = Call::createAggregateDevice});
  model_->setOutput(std::string("headset"), row("com.example.player"));
  ASSERT_TRUE(pumpUntil([&] { return held.isHeld(); }));
  model_->dismissChannel(row("com.example.player"));
  release(held);
  EXPECT_TRUE(audio_.isClean());
  EXPECT_FLOAT_EQ(heard(), 0.25F);
}

TEST_F(InterleavingTest, AProcessThatRestartsWhileItsTapIsStartedIsControlledAsTheNewOne) {
  const auto process = play("Player", "com.example.player");
  HeldCall held(audio_, {.call = Call::createProcessTap});
  openUntilHeld(held);
  const auto restarted = restart(process, "Player", "com.example.player");
  model_->onAppear(); // which finds the new process while the old one's start is under way
  release(held);
  EXPECT_EQ(row("com.example.player")->objectID(), restarted);
  EXPECT_TRUE(row("com.example.player")->active());
  passReconciliation();
  EXPECT_THAT(controlled(), testing::Contains(restarted));
  model_->setGain(50, row("com.example.player"));
  ASSERT_TRUE(settle());
  EXPECT_FLOAT_EQ(heard(), 0.125F);
}

TEST_F(InterleavingTest, ARevocationWhileATapIsStartedTakesItBack) {
  play("Alpha", "com.example.alpha");
  play("Beta", "com.example.beta");
  HeldCall held(audio_, {.call = Call::createProcessTap});
  openUntilHeld(held);
  consent_.setPreflight(1);
  clock_.advance(kMonitorInterval);
  pump();
  EXPECT_FALSE(model_->permissionGranted());
  release(held);
  for (const auto& row : model_->channels()->rows())
    EXPECT_FALSE(row->active());
  EXPECT_TRUE(audio_.isClean());
}

TEST_F(InterleavingTest, TheLoopKeepsTheModelToTheEndOfItsTick) {
  openPanel();
  const std::weak_ptr weakModel = model_;
  model_.reset();
  pass(kTick - 1ns);
  EXPECT_FALSE(weakModel.expired());
  audio_.clearLog();
  pass(1ns);
  EXPECT_TRUE(weakModel.expired());
  EXPECT_THAT(audio_.log(), IsEmpty());
}

TEST_F(InterleavingTest, TheMonitorDoesNotKeepTheModel) {
  openPanel();
  model_->onDisappear();
  ASSERT_TRUE(settle());
  const std::weak_ptr weakModel = model_;
  model_.reset();
  EXPECT_TRUE(weakModel.expired());
}

TEST_F(InterleavingTest, AnActionIsCarriedOutAlsoIfTheModelIsDropped) {
  play("Player", "com.example.player");
  openPanel();
  model_->onDisappear();
  ASSERT_TRUE(settle());
  model_->setGain(50, row("com.example.player"));
  const std::weak_ptr weakModel = model_;
  model_.reset();
  ASSERT_TRUE(settle());
  EXPECT_TRUE(weakModel.expired());
  EXPECT_FLOAT_EQ(heard(), 0.125F);
}

} // namespace
} // namespace sonvel
