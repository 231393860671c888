#include "engine/controller_test.h"

namespace sonvel {
namespace {

using namespace std::chrono_literals;
using simulated::Call;
using testing::ElementsAre;
using testing::IsEmpty;

using Calls = std::vector<Call>;
using Results = std::vector<HardwareTeardownResult>;

class Teardown : public ControllerTest {
 protected:
  /// Three channels, added in no order.
  void addThreeChannels() {
    for (const AudioObjectID appID : {90U, 12U, 45U})
      addChannel(playingApp(appID));
  }

  AudioObjectID tapOf(AudioObjectID appID) {
    for (const auto& tap : audio_.taps()) {
      if (tap.description.processes.front() == appID) return tap.id;
    }
    return kAudioObjectUnknown;
  }

  static std::string message(AudioObjectID appID) {
    return "Audio restoration for " + std::to_string(appID) +
           " is retrying: AudioHardwareDestroyProcessTap (OSStatus -50)";
  }

  static HardwareTeardownResult failedAtTap(AudioObjectID appID) {
    return {appID, {"AudioHardwareDestroyProcessTap (OSStatus -50)"}};
  }
};

TEST_F(Teardown, GivesTheApplicationBack) {
  addChannel(playingApp(87, 0.25F), "headset");
  EXPECT_EQ(heard("speakers"), 0.0F);
  audio_.clearLog();

  EXPECT_EQ(controller_->removeChannel(87), (HardwareTeardownResult{87, {}}));
  EXPECT_EQ(heard("speakers"), 0.25F);
  EXPECT_THAT(changes(), ElementsAre(Call::deviceStop, Call::destroyIOProcID, Call::destroyAggregateDevice,
                                     Call::destroyProcessTap));
  EXPECT_TRUE(audio_.isClean());
  EXPECT_EQ(controller_->removeChannel(87), std::nullopt);
}

TEST_F(Teardown, ResumesWhereItStopped) {
  const struct {
    Call failing;
    std::string failure;
    Calls attempt; // the calls of the one that fails
    Calls retry;   // and of the next
  } kCases[] = {
      {Call::deviceStop,
       "AudioDeviceStop (OSStatus -50)",
       {Call::deviceStop},
       {Call::deviceStop, Call::destroyIOProcID, Call::destroyAggregateDevice, Call::destroyProcessTap}},
      {Call::destroyIOProcID,
       "AudioDeviceDestroyIOProcID (OSStatus -50)",
       {Call::deviceStop, Call::destroyIOProcID},
       {Call::deviceStop, Call::destroyIOProcID, Call::destroyAggregateDevice, Call::destroyProcessTap}},
      {Call::destroyAggregateDevice,
       "AudioHardwareDestroyAggregateDevice (OSStatus -50)",
       {Call::deviceStop, Call::destroyIOProcID, Call::destroyAggregateDevice},
       {Call::destroyAggregateDevice, Call::destroyProcessTap}},
      {Call::destroyProcessTap,
       "AudioHardwareDestroyProcessTap (OSStatus -50)",
       {Call::deviceStop, Call::destroyIOProcID, Call::destroyAggregateDevice, Call::destroyProcessTap},
       {Call::destroyProcessTap}},
  };

  const auto app = playingApp(87, 0.25F);
  for (const auto& [failing, failure, attempt, retry] : kCases) {
    addChannel(app, "headset");
    audio_.fail({.call = failing, .status = -50});
    audio_.clearLog();

    EXPECT_EQ(controller_->removeChannel(87), (HardwareTeardownResult{87, {failure}}));
    EXPECT_EQ(changes(), attempt) << failure;
    EXPECT_TRUE(controller_->isControlled(87)) << failure;
    EXPECT_EQ(controller_->restorationFailure(), "Audio restoration for 87 is retrying: " + failure);
    EXPECT_EQ(heard("speakers"), 0.0F) << "the tap is still there";

    audio_.clearLog();
    advance(2s);
    EXPECT_EQ(changes(), retry) << failure;
    EXPECT_EQ(heard("speakers"), 0.25F) << failure;
    EXPECT_FALSE(controller_->isControlled(87)) << failure;
    EXPECT_EQ(controller_->restorationFailure(), std::nullopt) << failure;
    EXPECT_EQ(clock_.pendingCount(), 0U) << failure;
  }
}

TEST_F(Teardown, TakesAllDownInTheOrderOfTheIDs) {
  addThreeChannels();
  EXPECT_EQ(controller_->teardownAll(), (Results{{12, {}}, {45, {}}, {90, {}}}));
  EXPECT_TRUE(audio_.isClean());
  EXPECT_THAT(controller_->teardownAll(), IsEmpty());
}

TEST_F(Teardown, AFailureDoesNotKeepTheOthersFromBeingTakenDown) {
  addThreeChannels();
  failAlways(Call::destroyProcessTap, tapOf(12));
  failAlways(Call::destroyProcessTap, tapOf(90));
  EXPECT_EQ(controller_->teardownAll(), (Results{failedAtTap(12), {45, {}}, failedAtTap(90)}));
  EXPECT_THAT(controller_->controlledAppIDs(), ElementsAre(12U, 90U));
  EXPECT_EQ(controller_->restorationFailure(), message(12)) << "the first of them";
}

TEST_F(Teardown, RetriesEveryTwoSecondsUntilAllIsRestored) {
  addThreeChannels();
  failAlways(Call::destroyProcessTap, tapOf(12));
  failAlways(Call::destroyProcessTap, tapOf(90));
  controller_->teardownAll();
  audio_.clearLog();

  advance(1999ms);
  EXPECT_THAT(changes(), IsEmpty());
  for (std::size_t attempt = 1; attempt <= 5; ++attempt) {
    advance(attempt == 1 ? Clock::Duration(1ms) : Clock::Duration(2s));
    EXPECT_EQ(changes(), Calls(2 * attempt, Call::destroyProcessTap));
    EXPECT_EQ(controller_->restorationFailure(), message(12));
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
}

TEST_F(Teardown, ARetryTakesHealthySessionsDownToo) {
  addThreeChannels();
  audio_.fail({.call = Call::destroyProcessTap, .status = -50});
  controller_->removeChannel(45);
  EXPECT_EQ(audio_.taps().size(), 3U);
  advance(2s);
  EXPECT_TRUE(audio_.isClean());
  EXPECT_THAT(controller_->controlledAppIDs(), IsEmpty());
}

TEST_F(Teardown, ASecondFailureReplacesTheMessageAndStartsNoSecondLoop) {
  addThreeChannels();
  failAlways(Call::destroyProcessTap);
  controller_->removeChannel(90);
  advance(1s);
  controller_->removeChannel(12);
  EXPECT_EQ(controller_->restorationFailure(), message(12));
  EXPECT_EQ(clock_.pendingCount(), 1U);
  controller_->removeChannel(90);
  EXPECT_EQ(controller_->restorationFailure(), message(90));

  audio_.clearLog();
  advance(1s);
  EXPECT_EQ(std::ranges::count(changes(), Call::destroyProcessTap), 3)
      << "two seconds after the first failure";
  EXPECT_EQ(clock_.pendingCount(), 1U);
}

TEST_F(Teardown, OnlyAFullTeardownClearsTheMessage) {
  addThreeChannels();
  audio_.fail({.call = Call::destroyProcessTap, .status = -50});
  controller_->removeChannel(45);
  EXPECT_TRUE(controller_->removeChannel(12)->restored());
  EXPECT_TRUE(controller_->removeChannel(45)->restored());
  EXPECT_EQ(controller_->restorationFailure(), message(45));

  controller_->teardownAll();
  EXPECT_EQ(controller_->restorationFailure(), std::nullopt);
  EXPECT_EQ(clock_.pendingCount(), 1U) << "the retrying ends by itself";
  advance(2s);
  EXPECT_EQ(clock_.pendingCount(), 0U);
}

TEST_F(Teardown, TheRetryingIsOverOnlyWhenItsEndHasHadItsTurn) {
  addThreeChannels();
  audio_.fail({.call = Call::destroyProcessTap, .status = -50});
  controller_->removeChannel(45);
  clock_.advance(2s);
  executor_->runNext(); // the attempt succeeds, and its end waits
  ASSERT_EQ(executor_->pendingCount(), 1U);

  failAlways(Call::destroyProcessTap);
  addChannel(playingApp(87));
  controller_->removeChannel(87);
  EXPECT_EQ(controller_->restorationFailure(), message(87));
  EXPECT_EQ(clock_.pendingCount(), 0U) << "the retrying is still taken to go on";

  executor_->runAll();
  controller_->removeChannel(87);
  EXPECT_EQ(clock_.pendingCount(), 1U) << "a new one has begun";
}

TEST_F(Teardown, ADestroyedControllerRetriesNothing) {
  for (const bool isAttemptPosted : {false, true}) {
    controller_ = std::make_shared<HardwareController>(
        AudioEnvironment{audio_, processes_, bundle_, applications_}, clock_, executor_);
    addChannel(playingApp(isAttemptPosted ? 1087 : 87));
    failAlways(Call::destroyProcessTap);
    controller_->teardownAll();
    if (isAttemptPosted) clock_.advance(2s);
    EXPECT_EQ(executor_->pendingCount(), isAttemptPosted ? 1U : 0U);

    controller_.reset();
    EXPECT_EQ(clock_.pendingCount(), 0U);
    audio_.clearLog();
    advance(1min);
    EXPECT_THAT(audio_.log(), IsEmpty());
  }
}

TEST_F(Teardown, ARetryDoesNotKeepTheExecutorAlive) {
  addChannel(playingApp(87));
  failAlways(Call::destroyProcessTap);
  controller_->teardownAll();
  const std::weak_ptr<Executor> executor = executor_;
  executor_.reset();
  EXPECT_TRUE(executor.expired());
  audio_.clearLog();
  clock_.advance(2s);
  EXPECT_THAT(audio_.log(), IsEmpty());
}

} // namespace
} // namespace sonvel
