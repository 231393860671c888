#include "model/model_test.h"

#include <QMetaProperty>

namespace sonvel {
namespace {

using enum AudioCaptureStatus;
using testing::IsEmpty;

using LifeCycleTest = MixerTest;

constexpr const char* kFlag = "com.quellmarsh.sonvel.didOnboard";

TEST_F(LifeCycleTest, StartsWithoutAWordToAnybody) {
  EXPECT_TRUE(settle());
  EXPECT_THAT(audio_.log(), IsEmpty());
  EXPECT_EQ(clock_.pendingCount(), 0U);
  EXPECT_EQ(model_->permission(), unknown);
  EXPECT_EQ(std::tuple(model_->permissionGranted(), model_->isRequestingPermission(), model_->isFirstRun(),
                       model_->masterVolume(), model_->masterSupported()),
            std::tuple(false, false, true, 1.0, true));
  EXPECT_EQ(model_->status(), "");
  EXPECT_THAT(model_->outputDevices(), IsEmpty());
  EXPECT_EQ(model_->channels()->rowCount(), 0);
  EXPECT_THAT(preferences_.values, IsEmpty());
}

TEST_F(LifeCycleTest, TheFirstRunEndsWhenThePermissionIsFound) {
  struct Case {
    bool wasOnboarded;
    int preflight;
    bool isFirstRun; ///< after the panel has appeared
  };

  for (const auto& [wasOnboarded, preflight, isFirstRun] :
       {Case{false, 1, true}, Case{false, 0, false}, Case{true, 1, false}, Case{true, 0, false}}) {
    preferences_.values = {};
    if (wasOnboarded) preferences_.values[kFlag] = true;
    consent_.setPreflight(preflight);
    model_ = std::make_shared<MixerViewModel>(
        MixerDependencies{actor_, mainThread_, clock_, permission_, preferences_, updates_});
    EXPECT_EQ(model_->isFirstRun(), !wasOnboarded);
    openPanel();
    EXPECT_EQ(model_->isFirstRun(), isFirstRun);
    EXPECT_EQ(preferences_.boolForKey(kFlag), !isFirstRun);
    EXPECT_EQ(model_->permission(), preflight == 0 ? authorized : denied);
    model_->onDisappear();
  }
}

TEST_F(LifeCycleTest, AppearingReturnsBeforeAnythingIsDone) {
  model_->onAppear();
  EXPECT_EQ(model_->permission(), unknown);
  ASSERT_TRUE(settle());
  EXPECT_EQ(model_->permission(), authorized);
}

TEST_F(LifeCycleTest, EachAppearanceBringsEverythingUpToDate) {
  openPanel();
  EXPECT_EQ(model_->outputDevices().size(), 2U);
  EXPECT_EQ(model_->property("outputDevices").toList().at(1).toMap(),
            (QVariantMap{{"uid", "headset"}, {"name", "Headset"}}));
  model_->onDisappear();
  consent_.setPreflight(1);
  audio_.removeDevice("headset");
  audio_.setDefaultDevice("speakers");
  model_->setMaster(0.2);
  play("Player", "com.example.player");
  openPanel();
  EXPECT_EQ(model_->permission(), denied);
  EXPECT_EQ(model_->outputDevices().size(), 1U);
  EXPECT_NEAR(model_->masterVolume(), 0.2, 1e-6);
  EXPECT_EQ(model_->channels()->rowCount(), 1);
}

TEST_F(LifeCycleTest, AClosedPanelCostsTheMonitorsTimerAlone) {
  play("Player", "com.example.player");
  openPanel();
  auto* const player = row("com.example.player");
  model_->setGain(50, player);
  model_->setOutput(std::string("headset"), player);
  ASSERT_TRUE(settle());
  EXPECT_EQ(clock_.pendingCount(), 2U);
  model_->onDisappear();
  ASSERT_TRUE(settle());
  EXPECT_EQ(clock_.pendingCount(), 1U);
  audio_.clearLog();
  pass(30s);
  EXPECT_THAT(audio_.log(), IsEmpty());
  EXPECT_TRUE(player->active());
  EXPECT_FLOAT_EQ(heard("headset"), 0.125F);
}

TEST_F(LifeCycleTest, APanelThatHasGoneBeforeItWasUpToDateIsNotPolledFor) {
  model_->onAppear();
  model_->onDisappear();
  ASSERT_TRUE(settle());
  EXPECT_EQ(clock_.pendingCount(), 1U);
  model_->onAppear();
  model_->onDisappear();
  model_->onAppear();
  ASSERT_TRUE(settle());
  EXPECT_TRUE(MixerInspector::isPolling(*model_));
  EXPECT_EQ(clock_.pendingCount(), 2U);
}

class QuitTest : public MixerTest {
 protected:
  void quit() {
    (void)startTask(mainThread_, [this] { return waitForTeardown(); });
  }

  QCoro::Task<> waitForTeardown() {
    co_await model_->teardownForQuit();
    isOver_ = true;
    isCleanAtTheEnd_ = audio_.isClean();
  }

  bool isOver_ = false;
  bool isCleanAtTheEnd_ = false;
};

TEST_F(QuitTest, GivesEverythingBackBeforeItIsOver) {
  for (const std::string name : {"Alpha", "Beta", "Gamma"})
    play(name, "com.example." + name);
  openPanel();
  EXPECT_EQ(audio_.taps().size(), 3U);
  quit();
  ASSERT_TRUE(settle());
  EXPECT_TRUE(isOver_);
  EXPECT_TRUE(isCleanAtTheEnd_);
  EXPECT_EQ(clock_.pendingCount(), 0U) << "nothing waits any more";
}

TEST_F(QuitTest, IsOverAtOnceIfThePanelWasNeverOpened) {
  quit();
  ASSERT_TRUE(settle());
  EXPECT_TRUE(isOver_);
  EXPECT_THAT(audio_.log(), IsEmpty());
}

TEST_F(QuitTest, WhatIsUnderWayStartsNothingAnyMore) {
  for (const std::string name : {"Alpha", "Beta", "Gamma"})
    play(name, "com.example." + name);
  HeldCall held(audio_, {.call = simulated::Call::createProcessTap});
  model_->onAppear();
  ASSERT_TRUE(pumpUntil([&] { return held.isHeld(); }));
  quit();
  pump();
  EXPECT_FALSE(isOver_);
  held.release();
  ASSERT_TRUE(settle());
  EXPECT_TRUE(isOver_);
  EXPECT_TRUE(isCleanAtTheEnd_);
  EXPECT_TRUE(audio_.isClean());
  EXPECT_EQ(clock_.pendingCount(), 0U) << "nor does the polling";
}

TEST_F(QuitTest, IsOverAlsoIfSomethingCanNotBeGivenBack) {
  play("Player", "com.example.player");
  openPanel();
  audio_.fail({.call = simulated::Call::destroyProcessTap});
  quit();
  ASSERT_TRUE(settle());
  EXPECT_TRUE(isOver_);
  EXPECT_FALSE(isCleanAtTheEnd_);
  pass(2s);
  EXPECT_TRUE(audio_.isClean());
}

TEST_F(LifeCycleTest, UpdatesAreThereOrNot) {
  EXPECT_FALSE(model_->updatesAvailable());
  model_->checkForUpdates();
  EXPECT_EQ(updates_.checks, 0);
  updates_.available = true;
  model_ = std::make_shared<MixerViewModel>(
      MixerDependencies{actor_, mainThread_, clock_, permission_, preferences_, updates_});
  EXPECT_TRUE(model_->updatesAvailable());
  model_->checkForUpdates();
  EXPECT_EQ(updates_.checks, 1);
}

TEST_F(LifeCycleTest, EveryWriteIsAnnouncedAlsoOfTheSameValue) {
  play("Player", "com.example.player");
  openPanel();
  std::map<std::string, int> announced;
  const auto count = [&](const char* name, auto signal) {
    QObject::connect(model_.get(), signal, [&announced, name] { ++announced[name]; });
  };
  count("permission", &MixerViewModel::permissionChanged);
  count("granted", &MixerViewModel::permissionGrantedChanged);
  count("first run", &MixerViewModel::isFirstRunChanged);
  count("devices", &MixerViewModel::outputDevicesChanged);
  count("status", &MixerViewModel::statusChanged);
  count("supported", &MixerViewModel::masterSupportedChanged);
  count("volume", &MixerViewModel::masterVolumeChanged);
  model_->setMaster(model_->masterVolume());
  openPanel();
  EXPECT_THAT(announced,
              testing::UnorderedElementsAre(testing::Pair("permission", 1), testing::Pair("granted", 1),
                                            testing::Pair("first run", 1), testing::Pair("devices", 1),
                                            testing::Pair("status", 2), testing::Pair("supported", 2),
                                            testing::Pair("volume", 1)));
}

} // namespace
} // namespace sonvel
