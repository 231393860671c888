#include "model/model_test.h"

namespace sonvel {
namespace {

using simulated::Call;
using testing::ElementsAre;
using testing::IsEmpty;

class ActionsTest : public MixerTest {
 protected:
  ActionsTest() {
    first_ = play("Alpha", "com.example.alpha", 0.25F);
    second_ = play("Beta", "com.example.beta", 0.125F);
    openPanel();
    model_->onDisappear();
    EXPECT_TRUE(settle());
    audio_.clearLog();
  }

  AudioObjectID first_;
  AudioObjectID second_;
};

TEST_F(ActionsTest, TheGainIsStoredAtOnceAndHeardNext) {
  struct Case {
    int percent;
    float gain;
  };

  auto* const alpha = row("com.example.alpha");
  model_->setGain(0, row("com.example.beta"));
  for (const auto& [percent, gain] : {Case{150, 1.5F}, Case{0, 0.0F}, Case{37, 0.37F}, Case{250, 2.0F}}) {
    model_->setGain(percent, alpha);
    EXPECT_EQ(alpha->gainPercent(), percent);
    EXPECT_EQ(remembered().at("com.example.alpha"), std::pair(percent, false));
    ASSERT_TRUE(settle());
    EXPECT_FLOAT_EQ(heard(), 0.25F * gain);
  }
}

TEST_F(ActionsTest, MutingTwiceChangesNothingButWhatIsRemembered) {
  auto* const alpha = row("com.example.alpha");
  model_->setGain(50, alpha);
  model_->toggleMute(alpha);
  EXPECT_TRUE(alpha->muted());
  EXPECT_EQ(remembered().at("com.example.alpha"), std::pair(50, true));
  ASSERT_TRUE(settle());
  EXPECT_FLOAT_EQ(heard(), 0.125F);
  model_->toggleMute(alpha);
  ASSERT_TRUE(settle());
  EXPECT_EQ(remembered().at("com.example.alpha"), std::pair(50, false));
  EXPECT_FLOAT_EQ(heard(), 0.125F + 0.125F);
}

TEST_F(ActionsTest, ARowThatIsNotActiveIsChangedAlone) {
  auto* const alpha = row("com.example.alpha");
  alpha->setActive(false);
  model_->setGain(50, alpha);
  model_->toggleMute(alpha);
  model_->setOutput(std::string("headset"), alpha);
  ASSERT_TRUE(settle());
  EXPECT_EQ(std::tuple(alpha->gainPercent(), alpha->muted(), alpha->outputUID()),
            std::tuple(50, true, "headset"));
  EXPECT_FLOAT_EQ(heard(), 0.25F + 0.125F) << "the hardware was told nothing";
  model_->dismissChannel(alpha);
  ASSERT_TRUE(settle());
  EXPECT_THAT(rowNames(), ElementsAre("Beta"));
  EXPECT_THAT(remembered(), IsEmpty());
  EXPECT_THAT(controlled(), ElementsAre(first_, second_));
  EXPECT_THAT(audio_.log(), IsEmpty());
}

TEST_F(ActionsTest, DismissingAnActiveRowGivesItsApplicationBackAndForgetsIt) {
  auto* const alpha = row("com.example.alpha");
  model_->setGain(0, alpha);
  model_->dismissChannel(alpha);
  EXPECT_THAT(rowNames(), ElementsAre("Beta"));
  EXPECT_EQ(alpha->gainPercent(), 0) << "the row lives until control is back in the event loop";
  ASSERT_TRUE(settle());
  EXPECT_THAT(controlled(), ElementsAre(second_));
  EXPECT_FLOAT_EQ(heard(), 0.25F + 0.125F);
  openPanel();
  EXPECT_EQ(row("com.example.alpha")->gainPercent(), 100);
  EXPECT_THAT(controlled(), ElementsAre(first_, second_));
}

TEST_F(ActionsTest, AFailedMoveIsToldAndALaterOneClearsIt) {
  auto* const alpha = row("com.example.alpha");
  model_->setOutput(std::string("gone"), alpha);
  EXPECT_EQ(alpha->outputUID(), "gone");
  ASSERT_TRUE(settle());
  EXPECT_EQ(alpha->outputUID(), "gone");
  EXPECT_THAT(alpha->lastError().value_or(""),
              testing::StartsWith("CreateAggregateDevice failed (OSStatus "));
  model_->setOutput(std::string("headset"), row("com.example.beta"));
  model_->setOutput(std::nullopt, alpha);
  ASSERT_TRUE(settle());
  EXPECT_EQ(alpha->lastError(), std::nullopt);
  EXPECT_FLOAT_EQ(heard("headset"), 0.125F);
  EXPECT_THAT(remembered(), IsEmpty()) << "routes are not remembered";
}

TEST_F(ActionsTest, NamesRoutes) {
  EXPECT_EQ(model_->outputName(std::nullopt), "System Output");
  EXPECT_EQ(model_->outputName(std::string("headset")), "Headset");
  EXPECT_EQ(model_->outputName(std::string("gone")), "Device");
  EXPECT_EQ(model_->outputName(QVariant()), "System Output");
  EXPECT_EQ(model_->outputName(QVariant::fromValue(nullptr)), "System Output");
  EXPECT_EQ(model_->outputName(QVariant("headset")), "Headset");
}

TEST_F(ActionsTest, TheMasterVolumeKeepsWhatTheUserSet) {
  model_->setMaster(0.3);
  EXPECT_EQ(model_->masterVolume(), 0.3);
  ASSERT_TRUE(settle());
  EXPECT_FLOAT_EQ(actor_->call(&HardwareController::masterVolume).get().value_or(-1.0F), 0.3F);
  audio_.fail({.call = Call::setPropertyData, .times = std::nullopt});
  model_->setMaster(0.7);
  ASSERT_TRUE(settle());
  EXPECT_EQ(model_->masterVolume(), 0.7);
}

TEST_F(ActionsTest, ResettingPutsEveryRowToItsOwnLevelWhereItIs) {
  auto* const alpha = row("com.example.alpha");
  auto* const beta = row("com.example.beta");
  model_->setGain(10, alpha);
  model_->toggleMute(alpha);
  model_->setOutput(std::string("headset"), alpha);
  model_->setGain(180, beta);
  ASSERT_TRUE(settle());
  model_->resetAllVolumes();
  for (const auto* const row : {alpha, beta})
    EXPECT_EQ(std::tuple(row->gainPercent(), row->muted()), std::tuple(100, false));
  EXPECT_EQ(remembered().at("com.example.alpha"), std::pair(100, false));
  EXPECT_EQ(remembered().at("com.example.beta"), std::pair(100, false));
  EXPECT_EQ(alpha->outputUID(), "headset");
  ASSERT_TRUE(settle());
  EXPECT_FLOAT_EQ(heard("headset"), 0.25F);
  EXPECT_FLOAT_EQ(heard(), 0.125F);
}

TEST_F(ActionsTest, EverythingGoesBackToTheSystemOutputOneByOneWhateverFails) {
  auto* const alpha = row("com.example.alpha");
  auto* const beta = row("com.example.beta");
  for (auto* const row : {alpha, beta})
    model_->setOutput(std::string("headset"), row);
  ASSERT_TRUE(settle());
  audio_.fail({.call = Call::createProcessTap, .status = -50, .object = first_});
  model_->everythingToSystemOutput();
  EXPECT_EQ(alpha->outputUID(), "headset") << "nothing has happened yet";
  pump();
  EXPECT_EQ(alpha->outputUID(), std::nullopt);
  ASSERT_TRUE(settle());
  EXPECT_EQ(beta->outputUID(), std::nullopt);
  EXPECT_EQ(alpha->lastError(), std::nullopt);
  EXPECT_THAT(controlled(), ElementsAre(second_));
  EXPECT_FLOAT_EQ(heard(), 0.25F + 0.125F);
}

TEST_F(ActionsTest, WithoutRowsThereIsNothingToReset) {
  model_->dismissChannel(row("com.example.alpha"));
  model_->dismissChannel(row("com.example.beta"));
  model_->resetAllVolumes();
  model_->everythingToSystemOutput();
  for (const auto act : {&MixerViewModel::toggleMute, &MixerViewModel::dismissChannel})
    (model_.get()->*act)(nullptr);
  model_->setGain(1, nullptr);
  model_->setOutput(std::nullopt, nullptr);
  ASSERT_TRUE(settle());
  EXPECT_TRUE(audio_.isClean());
  EXPECT_THAT(remembered(), IsEmpty());
}

} // namespace
} // namespace sonvel
