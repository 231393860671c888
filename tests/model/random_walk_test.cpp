#include "model/random_walk.h"

#include <cstdlib>
#include <string>

namespace sonvel {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr unsigned kSanitizerFactor = 10;
#else
constexpr unsigned kSanitizerFactor = 1;
#endif

/// Steps of each walk; a sanitizer takes so many times as long. SONVEL_WALK_STEPS asks for another number.
constexpr unsigned kSteps = 100'000 / kSanitizerFactor;

/// A walk repeats the one before unless SONVEL_WALK_SEED says otherwise.
constexpr std::uint64_t kSeed = 20'260'101;

std::uint64_t fromEnvironment(const char* name, std::uint64_t otherwise) {
  const char* const text = std::getenv(name);
  return text != nullptr ? std::stoull(text) : otherwise;
}

class RandomWalkTest : public RandomWalk {
 protected:
  /// Takes the walk with `finishStep` after each step, which is to leave what must hold.
  template <class F> void walk(F finishStep) {
    const auto seedValue = fromEnvironment("SONVEL_WALK_SEED", kSeed);
    const auto steps = fromEnvironment("SONVEL_WALK_STEPS", kSteps);
    seed(seedValue);
    for (std::uint64_t i = 0; i < steps; ++i) {
      step();
      finishStep();
      if (HasFailure()) {
        FAIL() << "at step " << i << " with SONVEL_WALK_SEED=" << seedValue << "; before it:\n" << history();
      }
    }
    ASSERT_TRUE(settle());
    leave();
    EXPECT_LT(skippedHeardChecks_, heardChecks_ / 20) << "too much was not checked by ear";
    EXPECT_GT(heardAtItsGain_, heardChecks_ / 20) << "too little was controlled";
  }

  /// Whatever the walk has led to can be left with nothing remaining.
  void leave() {
    audio_.clearFailures();
    pass(1s); // for a probe to end
    (void)startTask(mainThread_, [this] { return model_->teardownForQuit(); });
    ASSERT_TRUE(settle());
    EXPECT_TRUE(audio_.isClean());
    check();
  }
};

TEST_F(RandomWalkTest, EverythingHoldsAfterEachStep) {
  walk([this] {
    ASSERT_TRUE(settle());
    check();
  });
}

/// Several things happen while what follows from the first is still under way. What happens is repeated by
/// the seed, how the threads meet is not.
TEST_F(RandomWalkTest, EverythingHoldsAfterStepsThatOvertakeEachOther) {
  walk([this] {
    switch (pick(4)) {
    case 0:
      ASSERT_TRUE(settle());
      return check();
    case 1:
      return pump();
    case 2:
      return audio_.runCycle(16);
    default:
      return;
    }
  });
}

} // namespace
} // namespace sonvel
