// What happens between two awaits.

#include "model/model_test.h"

namespace sonvel {
namespace {

using simulated::Call;
using testing::ElementsAre;

/// Two applications play, "Alpha" and "Beta".
class InterleavingTest : public MixerTest {
 protected:
  /// Waits until `begin`, or opening the panel, leads to the given call of the audio system, and runs `act`
  /// during that call.
  void during(WhichCall call, const std::function<void()>& act, const std::function<void()>& begin = {}) {
    HeldCall held(audio_, call);
    begin ? begin() : model_->onAppear();
    ASSERT_TRUE(pumpUntil([&] { return held.isHeld(); }));
    act();
    held.release();
    ASSERT_TRUE(settle());
  }

  ChannelState* alphaRow() const { return row("com.example.alpha"); }

  ChannelState* betaRow() const { return row("com.example.beta"); }

  AudioObjectID alpha_ = play("Alpha", "com.example.alpha", 0.25F);
  AudioObjectID beta_ = play("Beta", "com.example.beta", 0.125F);
};

TEST_F(InterleavingTest, WhatTheUserChangesWhileATapIsStartedIsHeard) {
  during({.call = Call::createProcessTap}, [this] {
    EXPECT_FALSE(alphaRow()->active());
    model_->setGain(50, alphaRow());
    model_->toggleMute(alphaRow());
    model_->toggleMute(alphaRow());
    model_->setOutput(std::string("headset"), alphaRow());
  });
  EXPECT_FLOAT_EQ(heard("headset"), 0.125F);
  EXPECT_EQ(heard(), 0.125F) << "Beta";
  model_->toggleMute(alphaRow());
  ASSERT_TRUE(settle());
  EXPECT_EQ(heard("headset"), 0.0F);
}

TEST_F(InterleavingTest, ARowDismissedWhileItsTapIsStartedOrMovedLeavesNoTap) {
  audio_.removeProcess(beta_);
  for (const bool isMoved : {false, true}) {
    if (isMoved) openPanel();
    during(
        {.call = Call::createAggregateDevice},
        [this] {
          model_->onDisappear();
          model_->dismissChannel(alphaRow());
        },
        [&] { isMoved ? model_->setOutput(std::string("headset"), alphaRow()) : model_->onAppear(); });
    EXPECT_TRUE(rowNames().empty());
    EXPECT_TRUE(audio_.isClean());
  }
}

TEST_F(InterleavingTest, ARowDismissedAndMadeAnewWhileItsTapIsStartedKeepsTheNewTap) {
  // The first reconciliation is starting Beta while the second is still at Alpha.
  model_->onAppear();
  during({.call = Call::createProcessTap, .after = 1}, [this] {
    pump();
    model_->dismissChannel(betaRow());
  });
  EXPECT_TRUE(betaRow()->active());
  EXPECT_THAT(controlled(), ElementsAre(alpha_, beta_));
}

TEST_F(InterleavingTest, AProcessThatRestartsWhileItsTapIsStartedIsControlledAsTheNewOne) {
  during({.call = Call::createProcessTap}, [this] {
    audio_.removeProcess(alpha_);
    alpha_ = play("Alpha", "com.example.alpha");
    model_->onAppear(); // finds the new process while the old one's start runs
  });
  passReconciliation();
  EXPECT_EQ(alphaRow()->objectID(), alpha_);
  model_->setGain(50, alphaRow());
  ASSERT_TRUE(settle());
  EXPECT_FLOAT_EQ(heard(), 0.125F + 0.125F);
}

TEST_F(InterleavingTest, ARevocationWhileATapIsStartedTakesItBack) {
  during({.call = Call::createProcessTap}, [this] {
    consent_.setPreflight(1);
    clock_.advance(kMonitorInterval);
    pump();
  });
  EXPECT_FALSE(alphaRow()->active() || betaRow()->active());
  EXPECT_TRUE(audio_.isClean());
}

TEST_F(InterleavingTest, QuittingGivesEverythingBackAndStartsNothing) {
  during({.call = Call::createProcessTap}, [this] {
    (void)startTask(mainThread_, [this] { return model_->teardownForQuit(); });
    pump();
  });
  EXPECT_TRUE(audio_.isClean());
  EXPECT_EQ(clock_.pendingCount(), 0U) << "nothing waits any more";
}

TEST_F(InterleavingTest, TheLoopKeepsTheModelToTheEndOfItsTickAndActionsAreCarriedOutWithoutIt) {
  openPanel();
  model_->setGain(0, alphaRow());
  const std::weak_ptr weakModel = model_;
  model_.reset();
  pass(kTick - 1ns);
  EXPECT_FALSE(weakModel.expired());
  pass(1ns);
  EXPECT_TRUE(weakModel.expired()) << "the monitor does not keep it";
  EXPECT_FLOAT_EQ(heard(), 0.125F);
}

} // namespace
} // namespace sonvel
