#include "model/model_test.h"

namespace sonvel {
namespace {

using enum AudioCaptureStatus;
using simulated::Call;
using testing::IsEmpty;

class PermissionFlowTest : public MixerTest {
 protected:
  static constexpr int kAuthorized = 0;
  static constexpr int kDenied = 1;
  static constexpr int kUndetermined = 2;

  bool isOnboarded() const { return preferences_.boolForKey("com.quellmarsh.sonvel.didOnboard"); }

  using State = std::tuple<AudioCaptureStatus, bool, bool>; ///< permission, granted, requesting

  State state() const {
    return {model_->permission(), model_->permissionGranted(), model_->isRequestingPermission()};
  }
};

TEST_F(PermissionFlowTest, ARequestIsAnsweredByTheUser) {
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
    EXPECT_TRUE(isOnboarded());
    EXPECT_TRUE(model_->isRequestingPermission());
    ASSERT_TRUE(settle());
    EXPECT_TRUE(model_->isRequestingPermission());
    consent_.answer(answer);
    EXPECT_TRUE(model_->isRequestingPermission()) << "the answer is applied on the main thread";
    ASSERT_TRUE(settle());
    EXPECT_EQ(state(), expected);
    EXPECT_EQ(reads(property::kProcessObjectList), answer ? 1 : 0);
  }
  EXPECT_TRUE(row("com.example.player")->active());
}

TEST_F(PermissionFlowTest, WhereNobodyCanBeAskedTheProbeTells) {
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

TEST_F(PermissionFlowTest, AnAnswerThatComesAfterTheModelIsDropped) {
  model_->requestPermission();
  model_.reset();
  ASSERT_TRUE(settle());
  consent_.answer(true);
  ASSERT_TRUE(settle());
  EXPECT_THAT(audio_.log(), IsEmpty());
}

TEST_F(PermissionFlowTest, TheMonitorFollowsTheSettings) {
  consent_.setPreflight(kDenied);
  play("Player", "com.example.player");
  openPanel();
  EXPECT_EQ(state(), State(denied, false, false));
  EXPECT_TRUE(model_->isFirstRun());
  model_->onDisappear();
  consent_.setPreflight(kUndetermined);
  pass(kMonitorInterval - 1ns);
  EXPECT_EQ(state(), State(denied, false, false));
  pass(1ns);
  EXPECT_EQ(state(), State(undetermined, false, false));
  EXPECT_FALSE(isOnboarded());

  consent_.setPreflight(kAuthorized);
  audio_.clearLog();
  pass(kMonitorInterval);
  EXPECT_EQ(state(), State(authorized, true, false));
  EXPECT_FALSE(model_->isFirstRun());
  EXPECT_TRUE(isOnboarded());
  EXPECT_THAT(audio_.log(), IsEmpty()) << "taps wait for the next reconciliation";
}

TEST_F(PermissionFlowTest, UnknownIsNoRevocationAndIsNotShown) {
  openPanel();
  consent_.setPreflight(std::nullopt);
  pass(kMonitorInterval);
  EXPECT_EQ(state(), State(authorized, true, false));
}

TEST_F(PermissionFlowTest, ARevocationGivesEverythingBack) {
  for (const int refusal : {kDenied, kUndetermined}) {
    consent_.setPreflight(kAuthorized);
    const std::vector<std::string> names{"Alpha", "Beta", "Gamma"};
    std::vector<AudioObjectID> played;
    for (const auto& name : names)
      played.push_back(play(name, "com.example." + name));
    openPanel();
    model_->setGain(10, row("com.example.Beta"));
    heard();
    passTicks(1);
    model_->onDisappear();

    consent_.setPreflight(refusal);
    pass(kMonitorInterval);
    EXPECT_EQ(state(), State(refusal == kDenied ? denied : undetermined, false, false));
    for (const auto& row : model_->channels()->rows())
      EXPECT_EQ(std::tuple(row->active(), row->level(), row->isPlaying()), std::tuple(false, 0.0F, true));
    EXPECT_EQ(row("com.example.Beta")->gainPercent(), 10);
    EXPECT_THAT(MixerInspector::audibleIDs(*model_), IsEmpty());
    EXPECT_EQ(model_->status(), "Audio access was revoked. Audio was restored to its normal output.");
    EXPECT_TRUE(audio_.isClean());
    EXPECT_FLOAT_EQ(heard(), 3 * 0.25F);
    for (const auto process : played)
      audio_.removeProcess(process);
  }
}

TEST_F(PermissionFlowTest, ARevocationTellsTheFirstFailure) {
  for (const std::string name : {"Alpha", "Beta", "Gamma"})
    play(name, "com.example." + name);
  openPanel();
  model_->onDisappear();
  audio_.fail({.call = Call::destroyProcessTap, .status = -50, .after = 1});
  audio_.fail({.call = Call::deviceStop, .status = -51, .after = 2});
  consent_.setPreflight(kDenied);
  pass(kMonitorInterval);
  EXPECT_EQ(model_->status(), "Audio access was revoked. Audio restoration is retrying: "
                              "AudioHardwareDestroyProcessTap (OSStatus -50)");
  pass(2s);
  EXPECT_TRUE(audio_.isClean());
}

TEST_F(PermissionFlowTest, ThereIsOneMonitor) {
  for (int i = 0; i < 3; ++i) {
    openPanel();
    model_->onDisappear();
  }
  ASSERT_TRUE(settle());
  EXPECT_EQ(clock_.pendingCount(), 1U);
}

} // namespace
} // namespace sonvel
