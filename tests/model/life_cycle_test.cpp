// The permission, and opening and closing the panel.

#include "model/model_test.h"

namespace sonvel {
namespace {

using enum AudioCaptureStatus;
using simulated::Call;
using testing::IsEmpty;

// A preflight result.
constexpr int kAuthorized = 0;
constexpr int kDenied = 1;
constexpr int kUndetermined = 2;

struct Case {
  std::optional<int> preflight;
  AudioCaptureStatus expected;
};

class LifeCycleTest : public MixerTest {
 protected:
  void expectPermission(AudioCaptureStatus expected) const {
    EXPECT_EQ(model_->permission(), expected);
    EXPECT_EQ(model_->permissionGranted(), expected == authorized);
  }
};

TEST_F(LifeCycleTest, TheFirstRunEndsWhenThePermissionIsFound) {
  for (const bool wasOnboarded : {false, true})
    for (const int preflight : {kDenied, kAuthorized}) {
      (void)preferences_.setBool(wasOnboarded, MixerViewModel::firstRunKey);
      consent_.setPreflight(preflight);
      model_ = std::make_shared<MixerViewModel>(
          MixerDependencies{actor_, mainThread_, clock_, permission_, preferences_, updates_});
      EXPECT_EQ(model_->isFirstRun(), !wasOnboarded);
      openPanel();
      EXPECT_EQ(model_->isFirstRun(), !wasOnboarded && preflight == kDenied);
      EXPECT_EQ(preferences_.boolForKey("com.quellmarsh.sonvel.didOnboard"), !model_->isFirstRun());
      model_->onDisappear();
    }
}

TEST_F(LifeCycleTest, EachAppearanceBringsEverythingUpToDate) {
  openPanel();
  model_->onDisappear();
  consent_.setPreflight(kDenied);
  audio_.removeDevice("headset");
  model_->setMaster(0.2);
  play("Player", "com.example.player");
  model_->onAppear();
  expectPermission(authorized); // appearing does not wait
  ASSERT_TRUE(settle());
  expectPermission(denied);
  EXPECT_EQ(model_->outputDevices().size(), 1U);
  EXPECT_NEAR(model_->masterVolume(), 0.2, 1e-6);
  EXPECT_EQ(model_->channels()->rowCount(), 1);
}

TEST_F(LifeCycleTest, AClosedPanelCostsTheMonitorsTimerAlone) {
  play("Player", "com.example.player");
  openPanel();
  openPanel();
  EXPECT_EQ(clock_.pendingCount(), 2U) << "one loop, one monitor";
  model_->onDisappear();
  audio_.clearLog();
  pass(30s);
  EXPECT_THAT(audio_.log(), IsEmpty());
  EXPECT_TRUE(row("com.example.player")->active());
  model_->onAppear();
  model_->onDisappear();
  ASSERT_TRUE(settle());
  EXPECT_EQ(clock_.pendingCount(), 1U) << "it was closed before it was up to date";
}

TEST_F(LifeCycleTest, ARequestIsAnsweredByTheUser) {
  play("Player", "com.example.player");
  for (const auto& [preflight, expected] : {Case{kDenied, denied}, Case{std::nullopt, unknown},
                                            Case{kUndetermined, undetermined}, Case{kDenied, authorized}}) {
    consent_.setPreflight(preflight);
    model_->requestPermission();
    EXPECT_FALSE(model_->isFirstRun()) << "the user has acted";
    ASSERT_TRUE(settle());
    consent_.answer(expected == authorized);
    EXPECT_TRUE(model_->isRequestingPermission()) << "the answer is applied on the main thread";
    ASSERT_TRUE(settle());
    EXPECT_FALSE(model_->isRequestingPermission());
    expectPermission(expected);
    EXPECT_EQ(controlled().size(), expected == authorized ? 1U : 0U);
  }
  model_->requestPermission();
  model_.reset();
  audio_.clearLog();
  consent_.answer(true);
  ASSERT_TRUE(settle());
  EXPECT_THAT(audio_.log(), IsEmpty()) << "the answer came too late";
}

TEST_F(LifeCycleTest, WhereNobodyCanBeAskedTheProbeTells) {
  consent_.setRequestable(false);
  for (const auto& [sample, preflight, expected] : {std::tuple(0.0F, kDenied, denied),
                                                    {0.0F, kUndetermined, undetermined},
                                                    {0.25F, kDenied, authorized}}) {
    const auto process = play("Player", "com.example.player", sample);
    consent_.setPreflight(preflight);
    model_->requestPermission();
    ASSERT_TRUE(settle());
    heard();
    EXPECT_TRUE(model_->isRequestingPermission()) << "the probe listens";
    pass(600ms);
    EXPECT_FALSE(model_->isRequestingPermission());
    expectPermission(expected);
    audio_.removeProcess(process);
  }
}

TEST_F(LifeCycleTest, TheMonitorFollowsTheSettings) {
  consent_.setPreflight(kDenied);
  openPanel();
  model_->onDisappear();
  audio_.clearLog();
  for (const auto& [preflight, expected] :
       {Case{kUndetermined, undetermined}, Case{kAuthorized, authorized}, Case{std::nullopt, authorized},
        Case{kDenied, denied}, Case{kAuthorized, authorized}, Case{kUndetermined, undetermined}}) {
    const auto before = model_->permission();
    consent_.setPreflight(preflight);
    pass(kMonitorInterval - 1ns);
    expectPermission(before);
    pass(1ns);
    expectPermission(expected);
    EXPECT_EQ(model_->isFirstRun(), !preferences_.boolForKey(MixerViewModel::firstRunKey));
  }
  EXPECT_THAT(audio_.log(), IsEmpty()) << "taps wait for the next reconciliation";
}

TEST_F(LifeCycleTest, ARevocationGivesEverythingBackAndTellsTheFirstFailure) {
  using enum MixerStatus::Event;
  for (const std::string name : {"Alpha", "Beta", "Gamma"})
    play(name, "com.example." + name);
  for (const bool fails : {false, true}) {
    consent_.setPreflight(kAuthorized);
    openPanel();
    heard();
    passTicks(1);
    model_->onDisappear();
    if (fails) {
      audio_.fail({.call = Call::destroyProcessTap, .status = -50, .after = 1});
      audio_.fail({.call = Call::deviceStop, .status = -51, .after = 2});
    }
    consent_.setPreflight(kDenied);
    pass(kMonitorInterval);
    for (const auto& row : model_->channels()->rows())
      EXPECT_EQ(std::tuple(row->active(), row->level(), row->isPlaying()), std::tuple(false, 0.0F, true));
    const auto failure = "AudioHardwareDestroyProcessTap (OSStatus -50)";
    EXPECT_EQ(model_->status(), fails ? (MixerStatus{.event = restorationFails, .failures = failure})
                                      : MixerStatus{.event = permissionRevoked});
    pass(2s); // the retry
    EXPECT_TRUE(audio_.isClean());
  }
}

} // namespace
} // namespace sonvel
