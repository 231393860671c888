#include "engine/render_callback.h"
#include "engine/render_realtime_guard.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <sched.h>
#include <stdexcept>
#include <unistd.h>
#include <vector>

namespace sonvel {
namespace {

constexpr int kCleanExitCode = 0;
constexpr int kWrongResultExitCode = 1;
constexpr int kNoGuardExitCode = 2;

/// Runs `action` guarded; the process must be the child of a death test.
template <typename Action> [[noreturn]] void runGuarded(Action action) {
  std::setvbuf(stdout, nullptr, _IONBF, 0); // unbuffered, because buffered output would be lost
  if (!enterGuardedRun()) _exit(kNoGuardExitCode);
  _exit(action() ? kCleanExitCode : kWrongResultExitCode);
}

// Volatile, so that no compiler removes what the guard must detect.
void* volatile sink = nullptr;

TEST(RealtimeGuardDeathTest, SeesWhatACycleMustNotDo) {
  sink = std::malloc(8);
  std::mutex mutex;
  const auto allocates = [] {
    sink = std::malloc(8);
    return true;
  };
  const auto constructs = [] {
    sink = ::operator new(8);
    return true;
  };
  const auto frees = [] { return std::free(sink), true; };
  const auto locks = [&mutex] { return mutex.lock(), true; };
  const auto throws = []() -> bool { throw std::runtime_error{"cycle"}; };
  const auto logs = [] { return std::puts("cycle") > 0; };
  const auto yields = [] { return sched_yield() == 0; };
  const auto isRefused = testing::ExitedWithCode(kUnsafeCallExitCode);
  const auto isKilled = testing::KilledBySignal(SIGSYS);

  EXPECT_EXIT(runGuarded([] { return true; }), testing::ExitedWithCode(kCleanExitCode), "");
  EXPECT_EXIT(runGuarded(allocates), isRefused, "");
  EXPECT_EXIT(runGuarded(constructs), isRefused, "");
  EXPECT_EXIT(runGuarded(frees), isRefused, "");
  EXPECT_EXIT(runGuarded(locks), isRefused, "");
  EXPECT_EXIT(runGuarded(throws), isRefused, "");
  EXPECT_EXIT(runGuarded(logs), isKilled, "");
  EXPECT_EXIT(runGuarded(yields), isKilled, "");
  std::free(sink);
}

TEST(RenderBlockDeathTest, RunsWithoutHeapLocksAndSystemCalls) {
  const auto mix = std::make_shared<RealtimeMixBox>();
  const auto metrics = std::make_shared<MixMetrics>();
  const IOProcBlock block = makeRenderBlock(mix, metrics);
  std::vector<float> in(1024, -0.75F);
  std::vector<float> out(1024);
  std::vector<AudioBuffer> inBuffers{{2, 4096, in.data()}, {2, 4096, nullptr}, {2, 7, in.data()}};
  std::vector<AudioBuffer> outBuffers{{2, 4096, out.data()}, {2, 64, out.data()}};
  const AudioBufferList input{inBuffers};
  AudioBufferList output{outBuffers};

  const auto playSeveralCycles = [&] {
    for (int cycle = 0; cycle < 100; ++cycle) {
      mix->setGain(cycle % 2 == 0 ? 2.0F : 0.5F);
      mix->setMuted(cycle % 3 == 0);
      block({}, input, {}, output, {});
    }
    return metrics->cycles() == 100 && metrics->inPeak() == 0.75F && out.back() == 0.0F;
  };
  EXPECT_EXIT(runGuarded(playSeveralCycles), testing::ExitedWithCode(kCleanExitCode), "");
}

} // namespace
} // namespace sonvel
