#include "contract/contract_test.h"

namespace sonvel::contract {

namespace {

constexpr Tone kTone{.frequencyHz = 1000.0, .amplitude = 0.4};

} // namespace

TEST_P(AudioContract, WhatIsMadeOfUnknownPartsIsNotMade) {
  const AudioObjectID process = startAudibleProgram(kTone);
  AudioObjectID made = kAudioObjectUnknown;
  EXPECT_EQ(hardware().createProcessTap(tapOn(kUnheardOfObject, TapMuteBehavior::unmuted), made),
            status::kBadObject);
  EXPECT_EQ(made, kAudioObjectUnknown);

  AudioObjectID tap = kAudioObjectUnknown;
  ASSERT_EQ(hardware().createProcessTap(tapOn(process, TapMuteBehavior::unmuted), tap), kNoError);
  const auto tapUID = text(tap, property::kTapUID).value_or("");
  EXPECT_EQ(hardware().createAggregateDevice(aggregateOf("no-such-device", tapUID), made),
            status::kBadDevice);
  EXPECT_EQ(hardware().createAggregateDevice(aggregateOf(speakers(), "no-such-tap"), made),
            status::kBadObject);
  EXPECT_EQ(made, kAudioObjectUnknown);

  EXPECT_EQ(hardware().destroyProcessTap(tap), kNoError);
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

TEST_P(AudioContract, WhatIsUnknownIsNotDestroyed) {
  EXPECT_EQ(hardware().destroyProcessTap(kUnheardOfObject), status::kBadObject);
  EXPECT_EQ(hardware().destroyAggregateDevice(kUnheardOfObject), status::kBadObject);
  EXPECT_EQ(hardware().destroyAggregateDevice(deviceWithUID(speakers())), status::kBadDevice);

  TapChain chain(hardware(), startAudibleProgram(kTone), speakers(), {});
  EXPECT_EQ(hardware().destroyProcessTap(chain.aggregate), status::kBadObject);
  EXPECT_EQ(hardware().destroyAggregateDevice(chain.tap), status::kBadObject);
  EXPECT_TRUE(blockRuns(*chain.state));
}

TEST_P(AudioContract, UnknownIOProcsAreRefused) {
  TapChain chain(hardware(), startAudibleProgram(kTone), speakers(), {});
  IOProcID ioProc = 0;
  const IOQueue queue{.label = "contract"};
  const auto block = playingBlock(chain.state);
  EXPECT_EQ(hardware().createIOProcID(kUnheardOfObject, queue, block, ioProc), status::kBadObject);
  EXPECT_EQ(hardware().createIOProcID(deviceWithUID(speakers()), queue, block, ioProc), status::kBadDevice);
  EXPECT_EQ(ioProc, 0U);
  EXPECT_EQ(hardware().deviceStart(chain.aggregate, kUnheardOfIOProc), status::kBadObject);
  EXPECT_EQ(hardware().deviceStop(chain.aggregate, kUnheardOfIOProc), status::kBadObject);
  EXPECT_EQ(hardware().destroyIOProcID(chain.aggregate, kUnheardOfIOProc), status::kBadObject);
  EXPECT_EQ(hardware().deviceStart(kUnheardOfObject, chain.ioProc), status::kBadObject);
  EXPECT_TRUE(blockRuns(*chain.state));
}

TEST_P(AudioContract, DestroyedObjectsAreGone) {
  TapChain chain(hardware(), startAudibleProgram(kTone), speakers(), {});
  const AudioObjectID tap = chain.tap;
  const AudioObjectID aggregate = chain.aggregate;
  chain.destroy();
  EXPECT_EQ(hardware().destroyProcessTap(tap), status::kBadObject);
  EXPECT_EQ(hardware().destroyAggregateDevice(aggregate), status::kBadObject);
  std::optional<std::string> uid;
  EXPECT_EQ(hardware().getPropertyData(tap, global(property::kTapUID), uid), status::kBadObject);
  EXPECT_EQ(hardware().getPropertyData(aggregate, global(property::kDeviceUID), uid), status::kBadObject);
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

TEST_P(AudioContract, BlockRunsFromStartToStop) {
  TapChain chain(hardware(), startAudibleProgram(kTone), speakers(), {.isStarted = false});
  system().letCyclesPass(speakers());
  EXPECT_EQ(chain.state->calls, 0);

  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(hardware().deviceStart(chain.aggregate, chain.ioProc), kNoError);
    EXPECT_EQ(hardware().deviceStart(chain.aggregate, chain.ioProc), kNoError);
    EXPECT_TRUE(blockRuns(*chain.state));

    EXPECT_EQ(hardware().deviceStop(chain.aggregate, chain.ioProc), kNoError);
    const int calls = chain.state->calls;
    system().letCyclesPass(speakers());
    EXPECT_EQ(chain.state->calls, calls);
    EXPECT_EQ(hardware().deviceStop(chain.aggregate, chain.ioProc), kNoError);
  }
  chain.destroy();
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

TEST_P(AudioContract, BlockIsKeptUntilTheIOProcIsDestroyed) {
  TapChain chain(hardware(), startAudibleProgram(kTone), speakers(), {});
  EXPECT_TRUE(blockRuns(*chain.state));
  EXPECT_GT(chain.state.use_count(), 1);
  EXPECT_EQ(hardware().deviceStop(chain.aggregate, chain.ioProc), kNoError);
  EXPECT_GT(chain.state.use_count(), 1);
  EXPECT_EQ(hardware().destroyIOProcID(chain.aggregate, chain.ioProc), kNoError);
  EXPECT_EQ(chain.state.use_count(), 1);
  EXPECT_EQ(hardware().deviceStart(chain.aggregate, chain.ioProc), status::kBadObject);
  chain.ioProc = 0;
}

TEST_P(AudioContract, RunningIOProcIsStoppedWhenItIsDestroyed) {
  TapChain chain(hardware(), startAudibleProgram(kTone), speakers(), {});
  EXPECT_TRUE(blockRuns(*chain.state));
  EXPECT_EQ(hardware().destroyIOProcID(chain.aggregate, chain.ioProc), kNoError);
  chain.ioProc = 0;
  const int calls = chain.state->calls;
  system().letCyclesPass(speakers());
  EXPECT_EQ(chain.state->calls, calls);
  EXPECT_EQ(chain.state.use_count(), 1);
}

TEST_P(AudioContract, AggregateDeviceTakesItsIOProcsWithIt) {
  TapChain chain(hardware(), startAudibleProgram(kTone), speakers(), {});
  EXPECT_TRUE(blockRuns(*chain.state));
  EXPECT_EQ(hardware().destroyAggregateDevice(chain.aggregate), kNoError);
  chain.aggregate = kAudioObjectUnknown;
  chain.ioProc = 0;
  const int calls = chain.state->calls;
  system().letCyclesPass(speakers());
  EXPECT_EQ(chain.state->calls, calls);
  EXPECT_EQ(chain.state.use_count(), 1);

  EXPECT_EQ(hardware().destroyProcessTap(chain.tap), kNoError);
  chain.tap = kAudioObjectUnknown;
  EXPECT_TRUE(becomesAudible(speakers(), kTone));
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

TEST_P(AudioContract, EndOfTheProcessIsNoFailure) {
  const std::int32_t pid = system().startProgram(kTone);
  EXPECT_TRUE(system().waitUntil([&] { return isPlaying(processWithPID(pid)); }));
  TapChain chain(hardware(), processWithPID(pid), speakers(), {});
  EXPECT_TRUE(blockHears(*chain.state, kTone.amplitude));
  system().endProgram(pid);
  EXPECT_TRUE(becomesSilent(speakers()));
  chain.destroy();
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

TEST_P(AudioContract, BlocksOfOneQueueNeverRunAtTheSameTime) {
  struct Shared {
    std::atomic<int> inside = 0;
    std::atomic<bool> haveMet = false;
    std::atomic<int> calls[2] = {};
  };

  const auto shared = std::make_shared<Shared>();
  const AudioObjectID process = startAudibleProgram(kTone);
  TapChain chains[] = {{hardware(), process, speakers(), {.muteBehavior = TapMuteBehavior::unmuted}},
                       {hardware(), process, headphones(), {.muteBehavior = TapMuteBehavior::unmuted}}};
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(hardware().destroyIOProcID(chains[i].aggregate, chains[i].ioProc), kNoError);
    chains[i].ioProc = 0;
    const auto block = [shared, i](const AudioTimeStamp&, const AudioBufferList&, const AudioTimeStamp&,
                                   AudioBufferList&, const AudioTimeStamp&) {
      if (shared->inside.fetch_add(1) != 0) shared->haveMet = true;
      ++shared->calls[i];
      for (int spin = 0; spin < 20'000; ++spin)
        if (shared->inside.load() != 1) shared->haveMet = true;
      shared->inside.fetch_sub(1);
    };
    EXPECT_EQ(hardware().createIOProcID(chains[i].aggregate, {.label = "contract"}, block, chains[i].ioProc),
              kNoError);
    EXPECT_EQ(hardware().deviceStart(chains[i].aggregate, chains[i].ioProc), kNoError);
  }
  EXPECT_TRUE(system().waitUntil([&] { return shared->calls[0] >= 8 && shared->calls[1] >= 8; }));
  EXPECT_FALSE(shared->haveMet);
}

} // namespace sonvel::contract
