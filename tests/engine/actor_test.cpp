#include "engine/actor.h"

#include <gtest/gtest.h>

#include <future>
#include <semaphore>
#include <stdexcept>

namespace sonvel {
namespace {

/// An object without locks.
struct Journal {
  explicit Journal(std::weak_ptr<Executor> ownExecutor)
      : executor(std::move(ownExecutor)) {}

  std::weak_ptr<Executor> executor;
};

/// A coroutine that nobody awaits.
struct Detached {
  struct promise_type {
    Detached get_return_object() const noexcept { return {}; }

    std::suspend_never initial_suspend() const noexcept { return {}; }

    std::suspend_never final_suspend() const noexcept { return {}; }

    void return_void() const noexcept {}

    [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
  };
};

using Landing = std::pair<int, bool>;

/// Awaits a reply; reports its value (-1: exception) and whether it resumed on `where`.
Detached land(Reply<int> reply, Executor& where, std::promise<Landing>& landed) {
  int value = -1;
  try {
    value = co_await std::move(reply).resumeOn(where);
  } catch (const std::runtime_error&) {
  }
  landed.set_value({value, where.isCurrent()});
}

class ActorTest : public testing::Test {
 protected:
  SerialThread other_;
  std::unique_ptr<Actor<Journal>> actor_ = std::make_unique<Actor<Journal>>();
};

TEST_F(ActorTest, ACoroutineGoesOnWhereItIsToldToWithWhatTheCallGave) {
  for (const bool isReadyBefore : {false, true})
    for (const bool isFailing : {false, true}) {
      std::binary_semaphore gate(isReadyBefore ? 1 : 0);
      auto reply = actor_->call([&](Journal&) {
        gate.acquire();
        return isFailing ? throw std::runtime_error("no") : 7;
      });
      if (isReadyBefore) actor_->call([](Journal&) {}).get();
      std::promise<Landing> landed;
      land(std::move(reply), other_, landed);
      gate.release();
      EXPECT_EQ(landed.get_future().get(), Landing(isFailing ? -1 : 7, true)) << isReadyBefore;
    }
  auto reply = actor_->callForAnswer<int>([](Journal&, const auto&) { throw std::runtime_error("no"); });
  EXPECT_THROW(reply.get(), std::runtime_error);
}

TEST_F(ActorTest, DestroyingItRunsWhatIsPendingAndRepliesOutliveIt) {
  std::binary_semaphore gate{0};
  std::vector<int> ran;
  std::weak_ptr<Executor> executor;
  auto first = actor_->call([&](Journal& journal) {
    gate.acquire();
    executor = journal.executor;
    executor.lock()->post([&] { ran.push_back(3); });
    ran.push_back(1);
    return 7;
  });
  auto second = actor_->call([&](Journal&) {
    ran.push_back(2);
    return ran.size() == 2 ? throw std::runtime_error("no") : 0;
  });
  std::thread releasing([&] { gate.release(); });
  actor_.reset();
  releasing.join();
  EXPECT_EQ(ran, (std::vector{1, 2, 3}));
  EXPECT_TRUE(executor.expired());
  EXPECT_EQ(first.get(), 7);
  std::promise<Landing> landed;
  land(std::move(second), other_, landed);
  EXPECT_EQ(landed.get_future().get(), Landing(-1, true));
}

} // namespace
} // namespace sonvel
