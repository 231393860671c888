#include "contract/contract_test.h"

namespace sonvel::contract {

namespace {

constexpr Tone kTone{.frequencyHz = 1000.0, .amplitude = 0.4};

} // namespace

TEST_F(AudioContract, MutedTapHasOneReaderAndNoCompany) {
  const AudioObjectID process = startAudibleProgram(kTone).process;
  TapChain chain = tap(process, kSpeakers);
  auto second = aggregateOf(kSpeakers, text(chain.tap, property::kTapUID).value_or(""));
  second.uid = "another-aggregate";
  AudioObjectID aggregate = kAudioObjectUnknown;
  IOProcID ioProc = 0;
  EXPECT_EQ(hardware().createAggregateDevice(second, aggregate), kNoError);
  EXPECT_EQ(hardware().createIOProcID(aggregate, {}, playingBlock(chain.state), ioProc), kNoError);
  EXPECT_EQ(hardware().deviceStart(aggregate, ioProc), status::kIllegalOperation);
  EXPECT_EQ(hardware().deviceStop(chain.aggregate, chain.ioProc), kNoError);
  EXPECT_EQ(hardware().deviceStart(aggregate, ioProc), kNoError);
  EXPECT_TRUE(blockRuns(*chain.state));
  EXPECT_EQ(hardware().destroyAggregateDevice(aggregate), kNoError);

  AudioObjectID unmuted = kAudioObjectUnknown;
  EXPECT_EQ(hardware().createProcessTap(tapOn(process, TapMuteBehavior::unmuted), unmuted), kNoError);
  second.taps.push_back({.uid = text(unmuted, property::kTapUID).value_or("")});
  EXPECT_EQ(hardware().createAggregateDevice(second, aggregate), status::kIllegalOperation);
  EXPECT_EQ(hardware().destroyProcessTap(unmuted), kNoError);
}

TEST_F(AudioContract, WhatIsUnknownIsRefused) {
  TapChain chain = tap(startAudibleProgram(kTone).process, kSpeakers);
  const AudioObjectID speakers = deviceWithUID(kSpeakers);
  AudioObjectID made = kAudioObjectUnknown;
  EXPECT_EQ(hardware().createProcessTap(tapOn(kUnheardOfObject), made), status::kBadObject);
  auto withoutDevice = aggregateOf("no-such-device", text(chain.tap, property::kTapUID).value_or(""));
  withoutDevice.uid = "another-aggregate";
  EXPECT_EQ(hardware().createAggregateDevice(withoutDevice, made), status::kBadDevice);
  EXPECT_EQ(hardware().createAggregateDevice(aggregateOf(kSpeakers, "no-such-tap"), made),
            status::kBadObject);
  EXPECT_EQ(made, kAudioObjectUnknown);
  EXPECT_EQ(hardware().destroyProcessTap(kUnheardOfObject), status::kBadObject);
  EXPECT_EQ(hardware().destroyProcessTap(chain.aggregate), status::kBadObject);
  EXPECT_EQ(hardware().destroyAggregateDevice(kUnheardOfObject), status::kBadObject);
  EXPECT_EQ(hardware().destroyAggregateDevice(chain.tap), status::kBadObject);
  EXPECT_EQ(hardware().destroyAggregateDevice(speakers), status::kBadDevice);

  IOProcID ioProc = 0;
  const IOQueue queue{.label = "contract"};
  const auto block = playingBlock(chain.state);
  EXPECT_EQ(hardware().createIOProcID(kUnheardOfObject, queue, block, ioProc), status::kBadObject);
  EXPECT_EQ(hardware().createIOProcID(speakers, queue, block, ioProc), status::kBadDevice);
  EXPECT_EQ(ioProc, 0U);
  EXPECT_EQ(hardware().deviceStart(chain.aggregate, kUnheardOfIOProc), status::kBadObject);
  EXPECT_EQ(hardware().deviceStop(chain.aggregate, kUnheardOfIOProc), status::kBadObject);
  EXPECT_EQ(hardware().destroyIOProcID(chain.aggregate, kUnheardOfIOProc), status::kBadObject);
  EXPECT_EQ(hardware().deviceStart(kUnheardOfObject, chain.ioProc), status::kBadObject);
  EXPECT_TRUE(blockRuns(*chain.state));
}

TEST_F(AudioContract, BlockIsCalledFromStartToStopAndKeptUntilItsIOProcIsDestroyed) {
  TapChain chain = tap(startAudibleProgram(kTone).process, kSpeakers, {.isStarted = false});
  system().letCyclesPass();
  EXPECT_EQ(chain.state->calls, 0);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(hardware().deviceStart(chain.aggregate, chain.ioProc), kNoError);
    EXPECT_EQ(hardware().deviceStart(chain.aggregate, chain.ioProc), kNoError);
    EXPECT_TRUE(blockRuns(*chain.state));
    EXPECT_EQ(hardware().deviceStop(chain.aggregate, chain.ioProc), kNoError);
    const int calls = chain.state->calls;
    system().letCyclesPass();
    EXPECT_EQ(chain.state->calls, calls);
    EXPECT_EQ(hardware().deviceStop(chain.aggregate, chain.ioProc), kNoError);
  }
  EXPECT_GT(chain.state.use_count(), 1);
  const auto [tap, aggregate, ioProc] = std::tuple(chain.tap, chain.aggregate, chain.ioProc);
  chain.destroy();
  EXPECT_EQ(chain.state.use_count(), 1);
  EXPECT_EQ(hardware().deviceStart(aggregate, ioProc), status::kBadObject);
  EXPECT_EQ(hardware().destroyAggregateDevice(aggregate), status::kBadObject);
  EXPECT_EQ(hardware().destroyProcessTap(tap), status::kBadObject);
  EXPECT_FALSE(text(tap, property::kTapUID) || text(aggregate, property::kDeviceUID));
}

TEST_F(AudioContract, RunningBlockEndsWithItsIOProcAndWithItsAggregateDevice) {
  const AudioObjectID process = startAudibleProgram(kTone).process;
  for (const bool endsAggregate : {false, true}) {
    SCOPED_TRACE(endsAggregate);
    TapChain chain = tap(process, kSpeakers);
    EXPECT_TRUE(blockRuns(*chain.state));
    const IOProcID ioProc = std::exchange(chain.ioProc, 0);
    if (endsAggregate) {
      EXPECT_EQ(hardware().destroyAggregateDevice(std::exchange(chain.aggregate, 0)), kNoError);
    } else {
      EXPECT_EQ(hardware().destroyIOProcID(chain.aggregate, ioProc), kNoError);
    }
    EXPECT_TRUE(blockIsGone(chain.state));
  }
  EXPECT_TRUE(system().becomesAudible(kSpeakers, kTone));
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

TEST_F(AudioContract, ProcessIsListedUntilItsEndEvenInATap) {
  const auto [pid, process] = startAudibleProgram(kTone);
  TapChain chain = tap(process, kSpeakers);
  EXPECT_TRUE(blockHears(*chain.state, 0.39, 0.41));
  system().endProgram(pid);
  EXPECT_TRUE(system().waitUntil([&] { return processWithPID(pid) == kAudioObjectUnknown; }));
  EXPECT_FALSE(number<std::int32_t>(process, global(property::kProcessPID)));
  EXPECT_TRUE(system().becomesSilent(kSpeakers));
  chain.destroy();
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

} // namespace sonvel::contract
