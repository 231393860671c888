// What the user does that a random walk does not judge.

#include "model/model_test.h"

namespace sonvel {
namespace {

using simulated::Call;
using testing::ElementsAre;

class ActionsTest : public MixerTest {
 protected:
  ActionsTest() {
    play("Alpha", "com.example.alpha", 0.25F);
    second_ = play("Beta", "com.example.beta", 0.125F);
    openPanel();
    model_->onDisappear();
    EXPECT_TRUE(settle());
    alpha_ = row("com.example.alpha");
    beta_ = row("com.example.beta");
  }

  AudioObjectID second_;
  ChannelState* alpha_;
  ChannelState* beta_;
};

TEST_F(ActionsTest, AGainIsNotClampedInItsRow) {
  for (const auto& [percent, gain] : {std::pair(150, 1.5F), std::pair(0, 0.0F), std::pair(250, 2.0F)}) {
    model_->setGain(percent, alpha_);
    EXPECT_EQ(alpha_->gainPercent(), percent);
    ASSERT_TRUE(settle());
    EXPECT_FLOAT_EQ(heard(), 0.25F * gain + 0.125F);
  }
}

TEST_F(ActionsTest, DismissingARowGivesItsApplicationBackAndForgetsIt) {
  model_->setGain(0, alpha_);
  model_->dismissChannel(alpha_);
  EXPECT_THAT(rowNames(), ElementsAre("Beta"));
  EXPECT_EQ(alpha_->gainPercent(), 0) << "the row lives until the event loop runs";
  ASSERT_TRUE(settle());
  EXPECT_THAT(controlled(), ElementsAre(second_));
  openPanel();
  EXPECT_EQ(row("com.example.alpha")->gainPercent(), 100);
}

TEST_F(ActionsTest, NamesRoutes) {
  EXPECT_EQ(model_->outputName(std::nullopt), "System Output");
  EXPECT_EQ(model_->outputName(std::string("headset")), "Headset");
  EXPECT_EQ(model_->outputName(std::string("gone")), "Device");
  EXPECT_EQ(model_->outputName(QVariant()), "System Output");
  EXPECT_EQ(model_->outputName(QVariant::fromValue(nullptr)), "System Output");
  EXPECT_EQ(model_->outputName(QVariant("headset")), "Headset");
}

TEST_F(ActionsTest, TheMasterVolumeStaysWhereTheUserPutItAlsoIfTheDeviceRefuses) {
  audio_.fail({.call = Call::setPropertyData, .times = std::nullopt});
  model_->setMaster(0.7);
  ASSERT_TRUE(settle());
  EXPECT_EQ(model_->masterVolume(), 0.7);
}

TEST_F(ActionsTest, ResettingLeavesTheRoutes) {
  model_->setGain(10, alpha_);
  model_->toggleMute(alpha_);
  model_->setOutput(std::string("headset"), alpha_);
  ASSERT_TRUE(settle());
  model_->resetAllVolumes();
  EXPECT_EQ(std::tuple(alpha_->gainPercent(), alpha_->muted(), alpha_->outputUID()),
            std::tuple(100, false, "headset"));
  EXPECT_EQ(remembered().at("com.example.beta"), std::pair(100, false));
  ASSERT_TRUE(settle());
  EXPECT_FLOAT_EQ(heard("headset"), 0.25F);
}

TEST_F(ActionsTest, EverythingGoesBackToTheSystemOutputOneByOneWhateverFails) {
  for (auto* const row : {alpha_, beta_})
    model_->setOutput(std::string("headset"), row);
  ASSERT_TRUE(settle());
  audio_.fail({.call = Call::createProcessTap, .status = -50});
  model_->everythingToSystemOutput();
  EXPECT_EQ(alpha_->outputUID(), "headset") << "nothing has happened yet";
  pump();
  EXPECT_EQ(alpha_->outputUID(), std::nullopt);
  ASSERT_TRUE(settle());
  EXPECT_EQ(beta_->outputUID(), std::nullopt);
  EXPECT_EQ(alpha_->lastError(), std::nullopt);
  EXPECT_FLOAT_EQ(heard(), 0.25F + 0.125F);
}

TEST_F(ActionsTest, NullIsNoRow) {
  for (const auto act : {&MixerViewModel::toggleMute, &MixerViewModel::dismissChannel})
    (model_.get()->*act)(nullptr);
  model_->setGain(1, nullptr);
  model_->setOutput(std::nullopt, nullptr);
  ASSERT_TRUE(settle());
  EXPECT_TRUE(remembered().empty());
}

} // namespace
} // namespace sonvel
