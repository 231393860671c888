// The permission, the panel that comes and goes, and the end.

#include "model/model_test.h"

#include <QSignalSpy>

namespace sonvel {
namespace {

using enum AudioCaptureStatus;
using simulated::Call;
using testing::IsEmpty;

class LifeCycleTest : public MixerTest {
 protected:
  static constexpr int kAuthorized = 0;
  static constexpr int kDenied = 1;
  static constexpr int kUndetermined = 2;

  static constexpr const char* kFlag = "com.quellmarsh.sonvel.didOnboard";

  void makeModel() {
    model_ = std::make_shared<MixerViewModel>(
        MixerDependencies{actor_, mainThread_, clock_, permission_, preferences_, updates_});
  }

  using State = std::tuple<AudioCaptureStatus, bool, bool>; ///< permission, granted, requesting

  State state() const {
    return {model_->permission(), model_->permissionGranted(), model_->isRequestingPermission()};
  }

  void playThree() {
    for (const std::string name : {"Alpha", "Beta", "Gamma"})
      play(name, "com.example." + name);
  }

  void quit() {
    (void)startTask(mainThread_, [this] { return waitForTeardown(); });
  }

  QCoro::Task<> waitForTeardown() {
    co_await model_->teardownForQuit();
    isCleanAtTheEnd_ = audio_.isClean();
  }

  std::optional<bool> isCleanAtTheEnd_; ///< none until the teardown is over
};

TEST_F(LifeCycleTest, StartsWithoutACallToAnybody) {
  EXPECT_TRUE(settle());
  EXPECT_THAT(audio_.log(), IsEmpty());
  EXPECT_EQ(clock_.pendingCount(), 0U);
  EXPECT_EQ(state(), State(unknown, false, false));
  EXPECT_EQ(std::tuple(model_->isFirstRun(), model_->masterVolume(), model_->masterSupported()),
            std::tuple(true, 1.0, true));
  EXPECT_EQ(model_->status(), MixerStatus{});
  EXPECT_THAT(model_->outputDevices(), IsEmpty());
}

TEST_F(LifeCycleTest, TheFirstRunEndsWhenThePermissionIsFound) {
  for (const bool wasOnboarded : {false, true}) {
    for (const int preflight : {kAuthorized, kDenied}) {
      preferences_.values = {{kFlag, wasOnboarded}};
      consent_.setPreflight(preflight);
      makeModel();
      EXPECT_EQ(model_->isFirstRun(), !wasOnboarded);
      openPanel();
      EXPECT_EQ(model_->isFirstRun(), !wasOnboarded && preflight == kDenied);
      EXPECT_EQ(preferences_.boolForKey(kFlag), !model_->isFirstRun());
      model_->onDisappear();
    }
  }
}

TEST_F(LifeCycleTest, EachAppearanceBringsEverythingUpToDate) {
  openPanel();
  EXPECT_EQ(model_->property("outputDevices").toList().at(1).toMap(),
            (QVariantMap{{"uid", "headset"}, {"name", "Headset"}}));
  model_->onDisappear();
  consent_.setPreflight(kDenied);
  audio_.removeDevice("headset");
  model_->setMaster(0.2);
  play("Player", "com.example.player");
  model_->onAppear();
  EXPECT_EQ(model_->permission(), authorized) << "appearing waits for nothing";
  ASSERT_TRUE(settle());
  EXPECT_EQ(model_->permission(), denied);
  EXPECT_EQ(model_->outputDevices().size(), 1U);
  EXPECT_NEAR(model_->masterVolume(), 0.2, 1e-6);
  EXPECT_EQ(model_->channels()->rowCount(), 1);
}

TEST_F(LifeCycleTest, AClosedPanelCostsTheMonitorsTimerAlone) {
  play("Player", "com.example.player");
  for (int i = 0; i < 3; ++i) {
    openPanel();
    openPanel();
    EXPECT_EQ(clock_.pendingCount(), 2U) << "one loop, one monitor";
    model_->onDisappear();
    ASSERT_TRUE(settle());
    EXPECT_EQ(clock_.pendingCount(), 1U);
  }
  audio_.clearLog();
  pass(30s);
  EXPECT_THAT(audio_.log(), IsEmpty());
  EXPECT_TRUE(row("com.example.player")->active());
  model_->onAppear();
  model_->onDisappear();
  ASSERT_TRUE(settle());
  EXPECT_EQ(clock_.pendingCount(), 1U) << "it was closed before it was up to date";
}

TEST_F(LifeCycleTest, QuittingGivesEverythingBackBeforeItIsOverAndStartsNothing) {
  playThree();
  HeldCall held(audio_, {.call = Call::createProcessTap});
  model_->onAppear();
  ASSERT_TRUE(pumpUntil([&] { return held.isHeld(); }));
  quit();
  pump();
  EXPECT_EQ(isCleanAtTheEnd_, std::nullopt);
  held.release();
  ASSERT_TRUE(settle());
  EXPECT_EQ(isCleanAtTheEnd_, true);
  EXPECT_TRUE(audio_.isClean());
  EXPECT_EQ(clock_.pendingCount(), 0U) << "nothing waits any more";
}

TEST_F(LifeCycleTest, QuittingIsOverAlsoIfSomethingCanNotBeGivenBack) {
  play("Player", "com.example.player");
  openPanel();
  audio_.fail({.call = Call::destroyProcessTap});
  quit();
  ASSERT_TRUE(settle());
  EXPECT_EQ(isCleanAtTheEnd_, false);
  pass(2s);
  EXPECT_TRUE(audio_.isClean());
}

TEST_F(LifeCycleTest, UpdatesAreThereOrNot) {
  for (const bool isAvailable : {false, true}) {
    updates_.available = isAvailable;
    makeModel();
    EXPECT_EQ(model_->updatesAvailable(), isAvailable);
    model_->checkForUpdates();
    EXPECT_EQ(updates_.checks, isAvailable ? 1 : 0);
  }
}

TEST_F(LifeCycleTest, EveryWriteIsAnnouncedAlsoOfTheSameValue) {
  openPanel();
  const auto count = [this](auto signal) { return std::make_unique<QSignalSpy>(model_.get(), signal); };
  const auto permission = count(&MixerViewModel::permissionChanged);
  const auto granted = count(&MixerViewModel::permissionGrantedChanged);
  const auto firstRun = count(&MixerViewModel::isFirstRunChanged);
  const auto devices = count(&MixerViewModel::outputDevicesChanged);
  const auto status = count(&MixerViewModel::statusChanged);
  const auto supported = count(&MixerViewModel::masterSupportedChanged);
  const auto volume = count(&MixerViewModel::masterVolumeChanged);
  model_->setMaster(model_->masterVolume());
  openPanel();
  EXPECT_EQ((std::array{permission->count(), granted->count(), firstRun->count(), devices->count(),
                        status->count(), supported->count(), volume->count()}),
            (std::array{qsizetype{1}, qsizetype{1}, qsizetype{1}, qsizetype{1}, qsizetype{2}, qsizetype{2},
                        qsizetype{1}}));
}

TEST_F(LifeCycleTest, ARequestIsAnsweredByTheUser) {
  struct Case {
    bool answer;
    std::optional<int> preflight;
    State state;
  };

  play("Player", "com.example.player");
  for (const auto& [answer, preflight, expected] :
       {Case{false, kDenied, {denied, false, false}}, Case{false, std::nullopt, {unknown, false, false}},
        Case{false, kUndetermined, {undetermined, false, false}},
        Case{true, kDenied, {authorized, true, false}}}) {
    audio_.clearLog();
    consent_.setPreflight(preflight);
    model_->requestPermission();
    EXPECT_FALSE(model_->isFirstRun()) << "the user has acted";
    ASSERT_TRUE(settle());
    consent_.answer(answer);
    EXPECT_TRUE(model_->isRequestingPermission()) << "the answer is applied on the main thread";
    ASSERT_TRUE(settle());
    EXPECT_EQ(state(), expected);
    EXPECT_EQ(reads(property::kProcessObjectList), answer ? 1 : 0);
  }
  EXPECT_TRUE(row("com.example.player")->active());
  model_->requestPermission();
  model_.reset();
  audio_.clearLog();
  consent_.answer(true);
  ASSERT_TRUE(settle());
  EXPECT_THAT(audio_.log(), IsEmpty()) << "the answer came too late";
}

TEST_F(LifeCycleTest, WhereNobodyCanBeAskedTheProbeTells) {
  struct Case {
    std::optional<float> sample; ///< of the one application; none: there is none
    int preflight;
    State state;
  };

  consent_.setRequestable(false);
  for (const auto& [sample, preflight, expected] :
       {Case{std::nullopt, kUndetermined, {undetermined, false, false}},
        Case{0.0F, kDenied, {denied, false, false}}, Case{0.25F, kDenied, {authorized, true, false}}}) {
    const auto process = sample ? play("Player", "com.example.player", *sample) : kAudioObjectUnknown;
    consent_.setPreflight(preflight);
    model_->requestPermission();
    ASSERT_TRUE(settle());
    EXPECT_EQ(model_->isRequestingPermission(), sample.has_value()) << "the probe listens";
    heard();
    pass(600ms);
    EXPECT_EQ(state(), expected);
    if (process != kAudioObjectUnknown) audio_.removeProcess(process);
  }
}

TEST_F(LifeCycleTest, TheMonitorFollowsTheSettings) {
  struct Case {
    std::optional<int> preflight;
    State state;
  };

  consent_.setPreflight(kDenied);
  openPanel();
  model_->onDisappear();
  for (const auto& [preflight, expected] :
       {Case{kUndetermined, {undetermined, false, false}}, Case{kAuthorized, {authorized, true, false}},
        Case{std::nullopt, {authorized, true, false}}, Case{kDenied, {denied, false, false}}}) {
    const auto before = state();
    EXPECT_EQ(model_->isFirstRun(), !preferences_.boolForKey(kFlag));
    consent_.setPreflight(preflight);
    pass(kMonitorInterval - 1ns);
    EXPECT_EQ(state(), before);
    audio_.clearLog();
    pass(1ns);
    EXPECT_EQ(state(), expected);
    EXPECT_THAT(audio_.log(), IsEmpty()) << "taps wait for the next reconciliation";
  }
}

TEST_F(LifeCycleTest, ARevocationGivesEverythingBackAndTellsTheFirstFailure) {
  using enum MixerStatus::Event;
  for (const bool fails : {false, true}) {
    consent_.setPreflight(kAuthorized);
    playThree();
    openPanel();
    model_->setGain(10, row("com.example.Beta"));
    heard();
    passTicks(1);
    model_->onDisappear();
    if (fails) {
      audio_.fail({.call = Call::destroyProcessTap, .status = -50, .after = 1});
      audio_.fail({.call = Call::deviceStop, .status = -51, .after = 2});
    }
    consent_.setPreflight(kDenied);
    pass(kMonitorInterval);
    EXPECT_EQ(state(), State(denied, false, false));
    for (const auto& row : model_->channels()->rows())
      EXPECT_EQ(std::tuple(row->active(), row->level(), row->isPlaying()), std::tuple(false, 0.0F, true));
    EXPECT_EQ(row("com.example.Beta")->gainPercent(), 10);
    EXPECT_THAT(MixerInspector::audibleIDs(*model_), IsEmpty());
    const auto failure = "AudioHardwareDestroyProcessTap (OSStatus -50)";
    EXPECT_EQ(model_->status(), fails ? (MixerStatus{.event = restorationFails, .failures = failure})
                                      : MixerStatus{.event = permissionRevoked});
    pass(2s); // the retry
    EXPECT_TRUE(audio_.isClean());
  }
}

} // namespace
} // namespace sonvel
