#include "contract/contract_test.h"

#include <chrono>

namespace sonvel::contract {

namespace {

constexpr Tone kTone{.frequencyHz = 1000.0, .amplitude = 0.4};
constexpr Tone kOtherTone{.frequencyHz = 1500.0, .amplitude = 0.2};
constexpr Tone kThirdTone{.frequencyHz = 2000.0, .amplitude = 0.1};

Tone scaled(Tone tone, double gain) {
  return {.frequencyHz = tone.frequencyHz, .amplitude = tone.amplitude * gain};
}

} // namespace

TEST_F(AudioContract, MutedTapIsHeardAsItsBlockPlaysItAtTheDeviceOfItsAggregateAlone) {
  const AudioObjectID process = startAudibleProgram(kTone).process;
  for (const float gain : {0.5F, 2.0F}) {
    SCOPED_TRACE(gain);
    TapChain chain = tap(process, kHeadphones, {.gain = gain});
    EXPECT_TRUE(blockHears(*chain.state, 0.39, 0.41));
    EXPECT_TRUE(system().becomesAudible(kHeadphones, scaled(kTone, gain)));
    EXPECT_TRUE(system().becomesSilent(kSpeakers));
    chain.state->gain = 0.0F; // writes nothing from now on
    EXPECT_TRUE(system().becomesSilent(kHeadphones));
    chain.destroy();
    EXPECT_TRUE(system().becomesAudible(kSpeakers, kTone));
  }
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

TEST_F(AudioContract, TapsOfTwoProcessesDoNotMix) {
  const AudioObjectID process = startAudibleProgram(kTone).process;
  const AudioObjectID otherProcess = startAudibleProgram(kOtherTone).process;
  TapChain chain = tap(process, kSpeakers, {.gain = 0.5F});
  TapChain otherChain = tap(otherProcess, kSpeakers, {.gain = 2.0F});
  EXPECT_TRUE(system().becomesAudible(kSpeakers, scaled(kTone, 0.5)));
  EXPECT_TRUE(system().becomesAudible(kSpeakers, scaled(kOtherTone, 2.0)));
  chain.destroy();
  EXPECT_TRUE(system().becomesAudible(kSpeakers, kTone));
  EXPECT_TRUE(system().becomesAudible(kSpeakers, scaled(kOtherTone, 2.0)));
}

TEST_F(AudioContract, StreamThatATappedProcessOpensJoinsTheTapAndOneThatNobodyMayMoveStays) {
  const auto [pid, process] = startAudibleProgram(kTone);
  TapChain chain = tap(process, kHeadphones, {.gain = 0.5F});
  system().openStream(pid, kThirdTone, true);
  system().openStream(pid, kOtherTone, false);
  for (const Tone& tone : {kTone, kOtherTone}) {
    EXPECT_TRUE(system().becomesAudible(kHeadphones, scaled(tone, 0.5)));
    EXPECT_TRUE(system().becomesAudible(kSpeakers, scaled(tone, 0.0)));
  }
  EXPECT_TRUE(system().becomesAudible(kSpeakers, kThirdTone));
  EXPECT_EQ(number<std::uint32_t>(chain.tap, global(property::kTapIsPartial)), 1U);
  chain.destroy();
  for (const Tone& tone : {kTone, kOtherTone, kThirdTone})
    EXPECT_TRUE(system().becomesAudible(kSpeakers, tone));
}

TEST_F(AudioContract, ProcessOfTheSameBundleIDJoinsBeforeItIsHeard) {
  const AudioObjectID process = startAudibleProgram(kTone, "Player").process;
  const TapChain chain = tap(process, kSpeakers, {.gain = 0.0F, .bundleIDs = {"Player"}});
  EXPECT_TRUE(system().becomesSilent(kSpeakers));
  EXPECT_TRUE(system().isSilentDuring([&] {
    system().startProgram(kOtherTone, "Player");
    EXPECT_TRUE(blockHears(*chain.state, 0.45, 0.61)); // both
  }));
}

TEST_F(AudioContract, ProcessIsNotHeardBetweenTheTapsOfAConfiguration) {
  const AudioObjectID process = startAudibleProgram(kTone).process;
  std::optional<TapChain> chain;
  chain.emplace(hardware(), process, kHeadphones, TapChain::Options{.gain = 0.0F});
  EXPECT_TRUE(system().becomesSilent(kSpeakers));
  EXPECT_TRUE(system().isSilentDuring([&] {
    for (const char* const device : {kSpeakers, kHeadphones, kHeadphones, kSpeakers}) {
      const auto begin = std::chrono::steady_clock::now();
      EXPECT_EQ(hardware().beginConfiguration(), kNoError);
      EXPECT_EQ(hardware().beginConfiguration(), status::kIllegalOperation);
      chain->destroy();
      chain.emplace(hardware(), process, device, TapChain::Options{.gain = 0.0F});
      EXPECT_EQ(hardware().commitConfiguration(), kNoError);
      EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1)) << "it waits for streams";
      EXPECT_TRUE(blockRuns(*chain->state));
    }
  }));
  chain->destroy();
  EXPECT_TRUE(system().becomesAudible(kSpeakers, kTone));
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

TEST_F(AudioContract, TappedProcessDoesNotFollowTheDefaultDeviceBeforeItsTapIsGone) {
  const AudioObjectID process = startAudibleProgram(kTone).process;
  startAudibleProgram(kOtherTone);
  TapChain chain = tap(process, kSpeakers, {.gain = 0.5F});
  system().setDefaultDevice(kHeadphones);
  EXPECT_TRUE(system().waitUntil([&] { return defaultDevice() == deviceWithUID(kHeadphones); }));
  EXPECT_TRUE(system().becomesAudible(kHeadphones, kOtherTone));
  EXPECT_TRUE(system().becomesAudible(kHeadphones, scaled(kTone, 0.0)));
  EXPECT_TRUE(system().becomesAudible(kSpeakers, scaled(kTone, 0.5)));
  chain.destroy();
  EXPECT_TRUE(system().becomesAudible(kHeadphones, kTone));
  EXPECT_TRUE(system().becomesSilent(kSpeakers));
}

TEST_F(AudioContract, PausedProcessIsTheSameObjectAndIsHeardAgainThroughItsTap) {
  const auto [pid, process] = startAudibleProgram(kTone);
  TapChain chain = tap(process, kSpeakers, {.gain = 0.5F});
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(system().becomesAudible(kSpeakers, scaled(kTone, 0.5)));
    system().setPlaying(pid, false);
    EXPECT_TRUE(system().waitUntil([&] { return !isPlaying(process); }));
    EXPECT_EQ(processWithPID(pid), process);
    EXPECT_TRUE(system().becomesSilent(kSpeakers));
    system().setPlaying(pid, true);
    EXPECT_TRUE(system().waitUntil([&] { return isPlaying(process); }));
  }
}

} // namespace sonvel::contract
