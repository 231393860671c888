// Removing sessions, and retrying what has failed.

#include "engine/controller_test.h"

namespace sonvel {
namespace {

using namespace std::chrono_literals;
using simulated::Call;
using testing::ElementsAre;
using testing::IsEmpty;

using Calls = std::vector<Call>;
using Results = std::vector<HardwareTeardownResult>;

const std::string kTapFailure = "AudioHardwareDestroyProcessTap (OSStatus -50)";

class Teardown : public ControllerTest {
 protected:
  /// Three channels, not added in the order of their IDs.
  void addThreeChannels() {
    for (const AudioObjectID appID : {90U, 12U, 45U})
      addChannel(playingApp(appID));
    executor_->runAll();
  }

  AudioObjectID tapOf(AudioObjectID appID) {
    for (const auto& tap : audio_.taps())
      if (tap.description.processes.front() == appID) return tap.id;
    return kAudioObjectUnknown;
  }

  static std::string message(AudioObjectID appID, const std::string& failure = kTapFailure) {
    return "Audio restoration for " + std::to_string(appID) + " is retrying: " + failure;
  }
};

TEST_F(Teardown, StopsAtTheStepThatFailsAndGoesOnThere) {
  const Calls all{Call::deviceStop, Call::destroyIOProcID, Call::destroyAggregateDevice,
                  Call::destroyProcessTap};

  const struct {
    std::size_t failing;
    std::size_t retryFrom;
    std::string failure;
  } kCases[] = {{0, 0, "AudioDeviceStop (OSStatus -50)"},
                {1, 0, "AudioDeviceDestroyIOProcID (OSStatus -50)"},
                {2, 2, "AudioHardwareDestroyAggregateDevice (OSStatus -50)"},
                {3, 3, kTapFailure}};

  const auto app = playingApp(87);
  for (const auto& [failing, retryFrom, failure] : kCases) {
    addChannel(app, "headset");
    executor_->runAll();
    audio_.fail({.call = all[failing], .status = -50});
    audio_.clearLog();
    EXPECT_EQ(controller_->removeChannel(87), (HardwareTeardownResult{87, {failure}}));
    EXPECT_EQ(changes(), Calls(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(failing) + 1));
    EXPECT_TRUE(controller_->isControlled(87)) << failure;
    EXPECT_EQ(controller_->restorationFailure(), message(87, failure));
    EXPECT_EQ(heard("speakers"), 0.0F) << "the tap is still there";
    audio_.fail({.call = all[failing], .status = -50});
    EXPECT_EQ(errorOfAddChannel(app), failure + " failed (OSStatus -1)") << "no second session beside it";

    audio_.clearLog();
    advance(2s);
    EXPECT_EQ(changes(), Calls(all.begin() + static_cast<std::ptrdiff_t>(retryFrom), all.end())) << failure;
    EXPECT_EQ(heard("speakers"), 0.25F) << failure;
    EXPECT_FALSE(controller_->isControlled(87)) << failure;
    EXPECT_EQ(controller_->restorationFailure(), std::nullopt) << failure;
    EXPECT_EQ(clock_.pendingCount(), 0U) << failure;
  }
  EXPECT_EQ(controller_->removeChannel(87), std::nullopt);
}

TEST_F(Teardown, AFailureKeepsNoOtherFromBeingTakenDownAndIsRetriedUntilAllIsRestored) {
  addThreeChannels();
  failAlways(Call::destroyProcessTap, tapOf(12));
  failAlways(Call::destroyProcessTap, tapOf(90));
  EXPECT_EQ(controller_->teardownAll(), (Results{{12, {kTapFailure}}, {45, {}}, {90, {kTapFailure}}}));
  EXPECT_THAT(controller_->controlledAppIDs(), ElementsAre(12U, 90U));
  EXPECT_EQ(controller_->restorationFailure(), message(12)) << "the first of them";
  advance(1999ms);
  audio_.clearLog();
  for (std::size_t attempt = 1; attempt <= 3; ++attempt) {
    advance(attempt == 1 ? Clock::Duration(1ms) : Clock::Duration(2s));
    EXPECT_EQ(changes(), Calls(2 * attempt, Call::destroyProcessTap));
  }
  audio_.clearFailures();
  failAlways(Call::destroyProcessTap, tapOf(90));
  advance(2s);
  EXPECT_EQ(controller_->restorationFailure(), message(90)) << "12 is restored";
  audio_.clearFailures();
  advance(2s);
  EXPECT_TRUE(audio_.isClean());
  EXPECT_EQ(controller_->restorationFailure(), std::nullopt);
  audio_.clearLog();
  advance(1min);
  EXPECT_THAT(audio_.log(), IsEmpty());
  EXPECT_THAT(controller_->teardownAll(), IsEmpty());
}

TEST_F(Teardown, ARetryTakesHealthySessionsDownAndBuildsThemAgainUnheard) {
  addThreeChannels();
  controller_->setGain(0.5F, 12);
  std::vector<SessionReport> reports;
  controller_->onSessionChanged([&](SessionReport report) { reports.push_back(std::move(report)); });
  reports.clear();
  audio_.fail({.call = Call::destroyProcessTap, .status = -50});
  controller_->removeChannel(45);
  const auto formerTap = tapOf(12);
  float heardMeanwhile = 0.0F;
  audio_.setCallHook([&](Call call, AudioObjectID object) {
    if (call == Call::createProcessTap && heardMeanwhile == 0.0F) heardMeanwhile = heard("speakers");
    (void)object;
  });
  advance(2s);
  audio_.setCallHook(nullptr);
  EXPECT_NE(tapOf(12), formerTap);
  EXPECT_EQ(heardMeanwhile, 0.375F) << "12 at a half, 90 whole, 45 not yet given back";
  EXPECT_EQ(heard("speakers"), 0.625F);
  EXPECT_THAT(controller_->controlledAppIDs(), ElementsAre(12U, 90U));
  ASSERT_EQ(reports.size(), 2U) << "of 45 alone: it could not be ended, and has ended";
  EXPECT_EQ(reports.front().error, kTapFailure);
  EXPECT_FALSE(reports.back().exists);
  EXPECT_EQ(clock_.pendingCount(), 0U);
}

TEST_F(Teardown, OneLoopRetriesAllAndIsOverOnlyWhenItsEndHasHadItsTurn) {
  addThreeChannels();
  failAlways(Call::destroyProcessTap);
  controller_->removeChannel(90);
  advance(1s);
  controller_->removeChannel(12);
  EXPECT_EQ(controller_->restorationFailure(), message(12)) << "the newest";
  EXPECT_EQ(clock_.pendingCount(), 1U);
  audio_.clearFailures();
  EXPECT_TRUE(controller_->removeChannel(12)->restored());
  EXPECT_EQ(controller_->restorationFailure(), message(12)) << "only when all is restored";

  executor_->runAll();
  clock_.advance(1s);
  executor_->runNext(); // the attempt succeeds; the work that ends it is queued
  EXPECT_EQ(controller_->restorationFailure(), std::nullopt);
  failAlways(Call::destroyProcessTap);
  controller_->removeChannel(45);
  EXPECT_EQ(clock_.pendingCount(), 0U) << "the retrying is still taken to go on";
  executor_->runAll();
  controller_->removeChannel(45);
  EXPECT_EQ(clock_.pendingCount(), 1U) << "a new one has begun";
}

TEST_F(Teardown, EndsWithTheControllerAndKeepsNothingAlive) {
  addChannel(playingApp(87));
  failAlways(Call::destroyProcessTap);
  controller_->teardownAll();
  clock_.advance(2s);
  controller_.reset();
  EXPECT_EQ(clock_.pendingCount(), 0U);
  audio_.clearLog();
  advance(1min);
  playingApp(88); // nobody listens any more
  EXPECT_EQ(executor_->pendingCount(), 0U);
  EXPECT_THAT(audio_.log(), IsEmpty());
  const std::weak_ptr<Executor> executor = executor_;
  executor_.reset();
  EXPECT_TRUE(executor.expired());
}

} // namespace
} // namespace sonvel
