#include "simulated/tapped_world.h"

#include <atomic>
#include <thread>

namespace sonvel::simulated {

/// A block that is held up in the middle of a cycle while another thread wants it gone.
class Stopping : public TappedWorld {
 protected:
  void SetUp() override {
    aggregate = makeAggregate(makeTap(), "speakers");
    ioProc = startIOProc(aggregate, [this](const auto&, const auto&, const auto&, auto&, const auto&) {
      isInside = true;
      isInside.notify_all();
      mayLeave.wait(false);
      isInside = false;
    });
  }

  /// Runs a cycle, makes the call during it and tells whether the block was running when the call returned.
  bool isInsideAfter(const std::function<OSStatus()>& call) {
    std::thread cycle([this] { audio.runCycle(); });
    isInside.wait(false);
    std::atomic<bool> wasInside = false;
    std::thread caller([&] {
      EXPECT_EQ(call(), kNoError);
      wasInside = isInside.load();
    });
    while (!audio.ioProcs().empty() && audio.ioProcs().front().isStarted)
      std::this_thread::yield();
    mayLeave = true;
    mayLeave.notify_all();
    caller.join();
    cycle.join();
    return wasInside;
  }

  AudioObjectID aggregate = kAudioObjectUnknown;
  IOProcID ioProc = 0;
  std::atomic<bool> isInside = false;
  std::atomic<bool> mayLeave = false;
};

TEST_F(Stopping, StopWaitsForTheBlock) {
  EXPECT_FALSE(isInsideAfter([this] { return audio.deviceStop(aggregate, ioProc); }));
}

TEST_F(Stopping, DestroyingTheIOProcWaitsForTheBlock) {
  EXPECT_FALSE(isInsideAfter([this] { return audio.destroyIOProcID(aggregate, ioProc); }));
}

TEST_F(Stopping, DestroyingTheAggregateWaitsForTheBlock) {
  EXPECT_FALSE(isInsideAfter([this] { return audio.destroyAggregateDevice(aggregate); }));
  EXPECT_TRUE(audio.ioProcs().empty());
}

} // namespace sonvel::simulated
