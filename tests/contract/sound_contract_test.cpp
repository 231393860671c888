#include "contract/contract_test.h"

namespace sonvel::contract {

namespace {

constexpr Tone kTone{.frequencyHz = 1000.0, .amplitude = 0.4};
constexpr Tone kOtherTone{.frequencyHz = 1500.0, .amplitude = 0.2};

Tone scaled(Tone tone, double gain) {
  return {.frequencyHz = tone.frequencyHz, .amplitude = tone.amplitude * gain};
}

} // namespace

TEST_P(AudioContract, MutedTapIsHeardAsItsBlockPlaysIt) {
  const AudioObjectID process = startAudibleProgram(kTone);
  for (const float gain : {0.5F, 1.0F, 2.0F}) {
    SCOPED_TRACE(gain);
    TapChain chain(hardware(), process, speakers(), {.gain = gain});
    EXPECT_TRUE(blockHears(*chain.state, kTone.amplitude));
    EXPECT_TRUE(becomesAudible(speakers(), scaled(kTone, gain)));
    chain.destroy();
    EXPECT_TRUE(becomesAudible(speakers(), kTone));
  }
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

TEST_P(AudioContract, MutedTapWhoseBlockPlaysNothingIsSilent) {
  TapChain chain(hardware(), startAudibleProgram(kTone), speakers(), {.gain = 0.0F});
  EXPECT_TRUE(becomesSilent(speakers()));
  EXPECT_TRUE(blockHears(*chain.state, kTone.amplitude));
}

TEST_P(AudioContract, UnmutedTapListensAndChangesNothing) {
  TapChain chain(hardware(), startAudibleProgram(kTone), speakers(),
                 {.muteBehavior = TapMuteBehavior::unmuted, .gain = 0.0F});
  EXPECT_TRUE(blockHears(*chain.state, kTone.amplitude));
  EXPECT_TRUE(becomesAudible(speakers(), kTone));
  chain.destroy();
  EXPECT_TRUE(becomesAudible(speakers(), kTone));
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

TEST_P(AudioContract, TapsOfTwoProcessesDoNotMix) {
  const AudioObjectID process = startAudibleProgram(kTone);
  const AudioObjectID otherProcess = startAudibleProgram(kOtherTone);
  TapChain chain(hardware(), process, speakers(), {.gain = 0.5F});
  EXPECT_TRUE(blockHears(*chain.state, kTone.amplitude));
  EXPECT_TRUE(becomesAudible(speakers(), scaled(kTone, 0.5)));
  EXPECT_TRUE(becomesAudible(speakers(), kOtherTone));

  TapChain otherChain(hardware(), otherProcess, speakers(), {.gain = 2.0F});
  EXPECT_TRUE(blockHears(*otherChain.state, kOtherTone.amplitude));
  EXPECT_TRUE(blockHears(*chain.state, kTone.amplitude));
  EXPECT_TRUE(becomesAudible(speakers(), scaled(kTone, 0.5)));
  EXPECT_TRUE(becomesAudible(speakers(), scaled(kOtherTone, 2.0)));

  chain.destroy();
  EXPECT_TRUE(becomesAudible(speakers(), kTone));
  EXPECT_TRUE(becomesAudible(speakers(), scaled(kOtherTone, 2.0)));
}

TEST_P(AudioContract, TapPlaysToTheDeviceOfItsAggregateAlone) {
  const AudioObjectID process = startAudibleProgram(kTone);
  TapChain chain(hardware(), process, headphones(), {.gain = 0.5F});
  EXPECT_TRUE(becomesAudible(headphones(), scaled(kTone, 0.5)));
  EXPECT_TRUE(becomesSilent(speakers()));
  chain.destroy();
  EXPECT_TRUE(becomesAudible(speakers(), kTone));
  EXPECT_TRUE(becomesSilent(headphones()));
}

TEST_P(AudioContract, StreamThatATappedProcessOpensJoinsTheTap) {
  const std::int32_t pid = system().startProgram(kTone);
  EXPECT_TRUE(becomesAudible(speakers(), kTone));
  TapChain chain(hardware(), processWithPID(pid), headphones(), {.gain = 0.5F});
  EXPECT_TRUE(becomesAudible(headphones(), scaled(kTone, 0.5)));
  EXPECT_TRUE(becomesSilent(speakers()));

  system().openStream(pid, kOtherTone);
  EXPECT_TRUE(becomesAudible(headphones(), scaled(kOtherTone, 0.5)));
  EXPECT_TRUE(becomesAudible(headphones(), scaled(kTone, 0.5)));
  EXPECT_TRUE(becomesSilent(speakers()));

  chain.destroy();
  EXPECT_TRUE(becomesAudible(speakers(), kTone));
  EXPECT_TRUE(becomesAudible(speakers(), kOtherTone));
}

TEST_P(AudioContract, TappedProcessDoesNotFollowTheDefaultDevice) {
  const AudioObjectID process = startAudibleProgram(kTone);
  TapChain chain(hardware(), process, speakers(), {.gain = 0.5F});
  EXPECT_TRUE(becomesAudible(speakers(), scaled(kTone, 0.5)));

  system().setDefaultDevice(headphones());
  EXPECT_TRUE(system().waitUntil([&] {
    return number<AudioObjectID>(kSystemObject, global(property::kDefaultOutputDevice)) ==
           deviceWithUID(headphones());
  }));
  system().letCyclesPass(headphones());
  EXPECT_TRUE(becomesAudible(speakers(), scaled(kTone, 0.5)));
  EXPECT_TRUE(becomesSilent(headphones()));

  chain.destroy();
  EXPECT_TRUE(becomesAudible(headphones(), kTone));
  EXPECT_TRUE(becomesSilent(speakers()));
}

TEST_P(AudioContract, PausedProcessIsHeardAgainThroughItsTap) {
  const std::int32_t pid = system().startProgram(kTone);
  EXPECT_TRUE(becomesAudible(speakers(), kTone));
  TapChain chain(hardware(), processWithPID(pid), speakers(), {.gain = 0.5F});
  EXPECT_TRUE(becomesAudible(speakers(), scaled(kTone, 0.5)));
  system().pauseProgram(pid);
  EXPECT_TRUE(becomesSilent(speakers()));
  system().resumeProgram(pid);
  EXPECT_TRUE(becomesAudible(speakers(), scaled(kTone, 0.5)));
}

} // namespace sonvel::contract
