#include "engine/actor.h"
#include "engine/hardware_controller.h"
#include "simulated/desktop.h"
#include "simulated/manual_clock.h"
#include "simulated/simulated_audio.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <future>
#include <semaphore>
#include <stdexcept>

namespace sonvel {
namespace {

using namespace std::chrono_literals;

constexpr auto kDeadline = 10s;

/// An object without any protection of its own.
struct Journal {
  explicit Journal(std::weak_ptr<Executor> ownExecutor)
      : executor(std::move(ownExecutor)) {}

  std::size_t size() const { return entries.size(); }

  std::vector<int> entries;
  std::weak_ptr<Executor> executor;
};

/// A coroutine that nobody waits for.
struct Detached {
  struct promise_type {
    Detached get_return_object() const noexcept { return {}; }

    std::suspend_never initial_suspend() const noexcept { return {}; }

    std::suspend_never final_suspend() const noexcept { return {}; }

    void return_void() const noexcept {}

    [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
  };
};

/// Awaits a reply, and tells `landed` whether it then is where it should be.
Detached land(Reply<int> reply, const Executor& where, std::promise<std::pair<int, bool>>& landed) {
  int value = 0;
  try {
    value = co_await std::move(reply);
  } catch (const std::runtime_error&) {
    value = -1;
  }
  landed.set_value({value, where.isCurrent()});
}

class ActorTest : public testing::Test {
 protected:
  /// A call that stays in the actor until release.
  Reply<int> blockingCall() {
    return actor_->call([&](Journal&) {
      gate_.acquire();
      return 7;
    });
  }

  void release() { gate_.release(); }

  std::binary_semaphore gate_{0};
  SerialThread other_;
  std::unique_ptr<Actor<Journal>> actor_ = std::make_unique<Actor<Journal>>();
};

TEST_F(ActorTest, RunsTheCallsOfManyThreadsOneAtATimeAndInOrder) {
  constexpr int kCallsPerThread = 500;
  const auto callRepeatedly = [&](int first) {
    for (int i = first; i < first + kCallsPerThread; ++i)
      (void)actor_->call([i](Journal& journal) { journal.entries.push_back(i); });
  };
  std::thread thread(callRepeatedly, 1000);
  callRepeatedly(0);
  thread.join();

  EXPECT_EQ(actor_->call(&Journal::size).get(), 2U * kCallsPerThread);
  const auto entries = actor_->call([](Journal& journal) { return journal.entries; }).get();
  std::array<int, 2> next{0, 1000};
  for (const int entry : entries)
    EXPECT_EQ(entry, next.at(entry < 1000 ? 0 : 1)++);
}

TEST_F(ActorTest, GivesWhatTheCallGives) {
  EXPECT_EQ(*actor_->call([](Journal&) { return std::make_unique<int>(5); }).get(), 5);
  EXPECT_TRUE(actor_->call([&](Journal&) { return actor_->isCurrent(); }).get());
  EXPECT_FALSE(actor_->isCurrent());
  auto failing = actor_->call([](Journal&) { throw std::runtime_error("no"); });
  EXPECT_THROW(failing.get(), std::runtime_error);
  auto moveOnly = std::make_unique<int>(6);
  EXPECT_EQ(actor_->call([moveOnly = std::move(moveOnly)](Journal&) { return *moveOnly; }).get(), 6);
}

TEST_F(ActorTest, WaitsForAtMostSoLong) {
  auto reply = blockingCall();
  EXPECT_FALSE(reply.waitFor(1ms));
  release();
  EXPECT_TRUE(reply.waitFor(kDeadline));
  EXPECT_EQ(reply.get(), 7);
}

TEST_F(ActorTest, ACoroutineGoesOnWhereItIsToldTo) {
  for (const bool isReadyBefore : {false, true}) {
    for (const bool isElsewhere : {false, true}) {
      std::promise<std::pair<int, bool>> landed;
      auto reply = isReadyBefore ? actor_->call([](Journal&) { return 7; }) : blockingCall();
      if (isReadyBefore) {
        ASSERT_TRUE(reply.waitFor(kDeadline));
      }
      if (isElsewhere)
        land(std::move(reply).resumeOn(other_), other_, landed);
      else
        land(std::move(reply), *actor_, landed);
      if (!isReadyBefore) release();
      EXPECT_EQ(landed.get_future().get(), std::pair(7, true)) << isReadyBefore << isElsewhere;
    }
  }
}

TEST_F(ActorTest, ACoroutineCatchesWhatTheCallThrows) {
  std::promise<std::pair<int, bool>> landed;
  land(actor_->call([](Journal&) -> int { throw std::runtime_error("no"); }), *actor_, landed);
  EXPECT_EQ(landed.get_future().get(), std::pair(-1, true));
}

TEST_F(ActorTest, DestroyingItRunsWhatIsPending) {
  std::promise<std::pair<int, bool>> landed;
  std::vector<int> ran;
  std::weak_ptr<Executor> executor;
  auto pending = blockingCall();
  land(actor_->call([&](Journal& journal) {
    executor = journal.executor;
    ran.push_back(1);
    journal.executor.lock()->post([&] { ran.push_back(3); });
    return 1;
  }),
       *actor_, landed);
  auto last = actor_->call([&](Journal&) { ran.push_back(2); });
  std::thread releasing([&] { release(); });
  actor_.reset();
  releasing.join();

  EXPECT_EQ(ran, (std::vector{1, 2, 3}));
  EXPECT_EQ(pending.get(), 7);
  EXPECT_TRUE(last.waitFor(0ns));
  EXPECT_EQ(landed.get_future().wait_for(0s), std::future_status::ready);
  EXPECT_TRUE(executor.expired());
}

TEST_F(ActorTest, AReplyOutlivesTheActor) {
  auto reply = actor_->call([](Journal&) { return 7; });
  actor_.reset();
  std::promise<std::pair<int, bool>> landed;
  land(std::move(reply), other_, landed);
  auto future = landed.get_future();
  ASSERT_EQ(future.wait_for(0s), std::future_status::ready) << "it goes on at once where it is";
  EXPECT_EQ(future.get(), std::pair(7, false));
}

/// The threads of the program as they are: the actor's, that of the IOProcs, the clock's and a caller.
TEST(ControllerActor, WorksWithAllThreadsAtOnce) {
  simulated::SimulatedAudio audio;
  audio.addDevice({.uid = "speakers"});
  const auto process = audio.addProcess({.pid = 512, .streams = {simulated::constantSignal(0.25F, 0.25F)}});
  simulated::SimulatedProcesses processes;
  simulated::SimulatedBundle bundle("com.quellmarsh.sonvel");
  simulated::SimulatedApplications applications;
  simulated::ManualClock clock;
  Actor<HardwareController> actor(AudioEnvironment{audio, processes, bundle, applications}, std::ref(clock));
  const AudioApp app{.objectID = process,
                     .pid = 512,
                     .bundleID = "pid 512",
                     .name = "Player",
                     .parentBundleID = std::nullopt};

  std::atomic<bool> isOver = false;
  std::thread playing([&] {
    while (!isOver)
      audio.runCycle(64);
  });
  std::thread timePassing([&] {
    while (!isOver)
      clock.advance(500ms);
  });
  for (int round = 0; round < 100; ++round) {
    (void)actor.call(
        [&](HardwareController& controller) { controller.addChannel(app, 1.0F, false, std::nullopt); });
    (void)actor.call([&](HardwareController& controller) { controller.setGain(0.5F, process); });
    (void)actor.call(&HardwareController::peaks).get();
    if (round % 10 == 0) audio.fail({.call = simulated::Call::destroyProcessTap, .status = -50});
    (void)actor.call([&](HardwareController& controller) { return controller.removeChannel(process); }).get();
  }
  isOver = true;
  playing.join();
  timePassing.join();
  audio.clearFailures();
  (void)actor.call(&HardwareController::teardownAll).get();
  EXPECT_TRUE(audio.isClean());
}

} // namespace
} // namespace sonvel
