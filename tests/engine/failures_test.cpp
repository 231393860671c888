// Every call of the audio system fails in turn, alone and with another one, while sessions are built, moved,
// rebuilt, followed, restarted and removed.

#include "engine/controller_test.h"

namespace sonvel {
namespace {

using namespace std::chrono_literals;
using simulated::Call;

constexpr OSStatus kPairStatus = -51;

/// The life of a controller with two applications: "87" at gain 0.5, and "88" unchanged.
class Life : public ControllerTest {
 public:
  void TestBody() override {}

  /// Runs the life with failures after the given numbers of calls, and checks the invariants. Returns the
  /// number of calls.
  std::size_t live(const std::vector<simulated::Failure>& failures) {
    for (const auto& failure : failures)
      audio_.fail(failure);
    const auto app = playingApp(87);
    const auto other = playingApp(88, 0.5F);
    attempt([&] { controller_->addChannel(app, 0.5F, false, std::nullopt); });
    attempt([&] { controller_->addChannel(other, 1.0F, false, "headset"); });
    attempt([&] { controller_->setOutput("headset", 87); });
    attempt([&] { controller_->rebuild(88); });
    audio_.removeDevice("headset");
    attempt([&] { controller_->probeCapture([](std::optional<bool>) {}); });
    audio_.returnDevice("headset");
    attempt([&] { controller_->setOutput(std::nullopt, 87); });
    audio_.removeProcess(87);
    attempt([] {});
    playingApp(87, 0.25F, 513);
    attempt([&] { controller_->removeChannel(88); });
    attempt([&] { controller_->keepSettings("com.example.Player89", 0.5F, false, std::nullopt); });
    advance(1s);
    const auto calls = audio_.log().size();

    audio_.clearFailures();
    for (int retry = 0; retry < 2; ++retry)
      advance(2s);
    EXPECT_EQ(controller_->restorationFailure(), std::nullopt);
    if (hasFailedToUndo()) return calls; // a failed undo is not retried
    const bool isControlled = controller_->isControlled(87);
    EXPECT_EQ(heard("speakers") + heard("headset"), 0.5F + (isControlled ? 0.125F : 0.25F))
        << "each is heard once, as it should be";
    for (const auto& result : controller_->teardownAll())
      EXPECT_TRUE(result.restored());
    for (const auto& tap : audio_.taps())
      EXPECT_EQ(tap.description.muteBehavior, TapMuteBehavior::unmuted) << "only a probe may leave one";
    EXPECT_EQ(heard("speakers"), 0.75F);
    return calls;
  }

 private:
  /// Whether one failure hit the building of a session and the other its undoing.
  bool hasFailedToUndo() const {
    const auto log = audio_.log();
    const auto isIn = [&](Call first, Call last, auto... others) {
      return std::ranges::any_of(log, [=](const auto& logged) {
        const bool isMeant =
            (logged.call >= first && logged.call <= last) || ((logged.call == others) || ...);
        return isMeant && logged.status == kPairStatus;
      });
    };
    const bool hasBuildingFailed = isIn(
        Call::createProcessTap, Call::createProcessTap, Call::createAggregateDevice, Call::createIOProcID,
        Call::deviceStart, Call::getPropertyText, Call::getPropertyData, Call::getPropertyDataSize);
    return hasBuildingFailed && isIn(Call::destroyProcessTap, Call::destroyProcessTap, Call::deviceStop,
                                     Call::destroyIOProcID, Call::destroyAggregateDevice);
  }

  template <class Action> void attempt(Action action) {
    try {
      action();
    } catch (const HardwareError&) {
    }
    executor_->runAll();
  }
};

TEST(Failures, AreSurvivedAloneAndInPairs) {
  const auto calls = static_cast<unsigned>(Life().live({}));
  unsigned scenarios = 0;
  const auto live = [&](const std::vector<simulated::Failure>& failures) {
    SCOPED_TRACE(testing::Message() << "call " << failures.front().after << " gives "
                                    << failures.front().status);
    Life().live(failures);
    ++scenarios;
  };
  for (const OSStatus status : {-50, 1})
    for (unsigned failing = 0; failing < calls && !HasFailure(); ++failing)
      live({{.status = status, .after = failing}});
  for (const auto claiming : {Call::createProcessTap, Call::createAggregateDevice, Call::createIOProcID,
                              Call::getPropertyText, Call::setPropertyData})
    for (unsigned failing = 0; failing < 40 && !HasFailure(); ++failing)
      live({{.call = claiming, .status = kNoError, .after = failing}});
  for (const auto second : {Call::createAggregateDevice, Call::deviceStart, Call::destroyProcessTap})
    for (unsigned failing = 0; failing < calls && !HasFailure(); ++failing)
      live({{.status = kPairStatus, .after = failing},
            {.call = second, .status = kPairStatus, .after = failing % 5}});
  RecordProperty("scenarios", std::to_string(scenarios));
}

} // namespace
} // namespace sonvel
