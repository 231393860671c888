#include "simulated/tapped_world.h"

namespace sonvel::simulated {

using Hearing = TappedWorld;

TEST_F(Hearing, ProcessPlaysToItsDeviceOrToTheDefaultOne) {
  EXPECT_EQ(hear("speakers"), kOwn);
  EXPECT_EQ(hear("headphones"), kSilence);
  audio.setDefaultDevice("headphones");
  EXPECT_EQ(hear("speakers"), kSilence);
  EXPECT_EQ(hear("headphones"), kOwn);
  audio.setProcessOutput(process, "speakers");
  EXPECT_EQ(hear("speakers"), kOwn);
  EXPECT_EQ(hear("headphones"), kSilence);
  audio.setPlaying(process, false);
  EXPECT_EQ(hear("speakers"), kSilence);
}

TEST_F(Hearing, StreamsAndProcessesAdd) {
  audio.addStream(process, constantSignal(0.25F, 0.0F));
  audio.addProcess({.pid = 8, .streams = {constantSignal(0.0F, 0.5F)}});
  EXPECT_EQ(hear("speakers"), (Frame{0.75F, 0.75F}));
}

TEST_F(Hearing, SignalGoesOnFromCycleToCycle) {
  audio.setSignal(process, [](std::uint64_t frame) { return Frame{static_cast<float>(frame), 0.0F}; });
  audio.runCycle(16);
  audio.runCycle(8);
  const auto frames = audio.heard("speakers");
  ASSERT_EQ(frames.size(), 8U);
  EXPECT_EQ(frames.front().left, 16.0F);
  EXPECT_EQ(frames.back().left, 23.0F);
}

TEST_F(Hearing, MutedTapSilencesFromItsCreationToItsDestruction) {
  const AudioObjectID tap = makeTap();
  EXPECT_EQ(hear("speakers"), kSilence);
  const AudioObjectID aggregate = makeAggregate(tap, "headphones");
  const IOProcID ioProc = startIOProc(aggregate, playing(2.0F));
  EXPECT_EQ(hear("speakers"), kSilence);
  EXPECT_EQ(hear("headphones"), (Frame{1.0F, 0.5F}));
  EXPECT_EQ(audio.deviceStop(aggregate, ioProc), kNoError);
  EXPECT_EQ(hear("headphones"), kSilence);
  EXPECT_EQ(audio.destroyAggregateDevice(aggregate), kNoError);
  EXPECT_EQ(hear("speakers"), kSilence);
  EXPECT_EQ(audio.destroyProcessTap(tap), kNoError);
  EXPECT_EQ(hear("speakers"), kOwn);
}

TEST_F(Hearing, UnmutedTapAddsWhatItsBlockPlays) {
  startIOProc(makeAggregate(makeTap(TapMuteBehavior::unmuted), "speakers"), playing(1.0F));
  EXPECT_EQ(hear("speakers"), (Frame{1.0F, 0.5F}));
}

TEST_F(Hearing, BlockHasOneInterleavedStereoBufferEachWayAndSilentOutput) {
  int calls = 0;
  const AudioObjectID aggregate = makeAggregate(makeTap(), "speakers");
  startIOProc(aggregate, [&calls](const AudioTimeStamp& now, const AudioBufferList& input,
                                  const AudioTimeStamp&, AudioBufferList& output, const AudioTimeStamp&) {
    ++calls;
    EXPECT_EQ(now.sampleTimeFrames, 0U);
    ASSERT_EQ(input.buffers.size(), 1U);
    ASSERT_EQ(output.buffers.size(), 1U);
    for (const AudioBuffer& buffer : {input.buffers[0], output.buffers[0]}) {
      EXPECT_EQ(buffer.channelCount, 2U);
      EXPECT_EQ(buffer.sizeBytes, 32 * 2 * sizeof(float));
    }
    const auto* const in = static_cast<const float*>(input.buffers[0].data);
    auto* const out = static_cast<float*>(output.buffers[0].data);
    EXPECT_EQ((Frame{in[62], in[63]}), kOwn);
    EXPECT_EQ((Frame{out[62], out[63]}), kSilence);
    out[63] = 1.0F;
  });
  audio.runCycle(32);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(audio.heard("speakers").back(), (Frame{0.0F, 1.0F}));
}

TEST_F(Hearing, AggregateRestsWhileItsDeviceIsAway) {
  int calls = 0;
  const AudioObjectID aggregate = makeAggregate(makeTap(), "headphones");
  startIOProc(aggregate, [&calls](const auto&, const auto&, const auto&, auto&, const auto&) { ++calls; });
  audio.removeDevice("headphones");
  EXPECT_EQ(hear("speakers"), kSilence);
  EXPECT_TRUE(audio.heard("headphones").empty());
  EXPECT_EQ(calls, 0);
  EXPECT_NE(audio.returnDevice("headphones"), headphones);
  EXPECT_EQ(hear("headphones"), kSilence);
  EXPECT_EQ(calls, 1);
}

TEST_F(Hearing, NothingPlaysToADefaultDeviceThatIsAway) {
  audio.removeDevice("speakers");
  EXPECT_EQ(hear("headphones"), kSilence);
  audio.returnDevice("speakers");
  EXPECT_EQ(hear("speakers"), kOwn);
  audio.setDefaultDevice(std::nullopt);
  EXPECT_EQ(hear("speakers"), kSilence);
}

TEST_F(Hearing, LossGivesTheProcessBack) {
  const AudioObjectID tap = makeTap();
  const AudioObjectID aggregate = makeAggregate(tap, "speakers");
  const IOProcID ioProc = startIOProc(aggregate, playing(2.0F));
  audio.loseAggregateDevice(aggregate);
  EXPECT_EQ(hear("speakers"), kSilence);
  audio.loseTap(tap);
  EXPECT_EQ(hear("speakers"), kOwn);

  EXPECT_NE(audio.deviceStart(aggregate, ioProc), kNoError);
  EXPECT_EQ(audio.deviceStop(aggregate, ioProc), kNoError);
  EXPECT_FALSE(audio.isClean());
  EXPECT_EQ(audio.destroyIOProcID(aggregate, ioProc), kNoError);
  EXPECT_TRUE(audio.isClean());
  EXPECT_EQ(audio.destroyAggregateDevice(aggregate), kNoError);
  EXPECT_EQ(audio.destroyAggregateDevice(aggregate), status::kBadObject);
  EXPECT_EQ(audio.destroyProcessTap(tap), kNoError);
  EXPECT_EQ(audio.destroyProcessTap(tap), status::kBadObject);
}

TEST_F(Hearing, TapHearsAProcessThatComesBackWithItsObject) {
  startIOProc(makeAggregate(makeTap(), "speakers"), playing(1.0F));
  audio.removeProcess(process);
  EXPECT_EQ(hear("speakers"), kSilence);
  audio.addProcess({.pid = 9, .streams = {constantSignal(1.0F, 1.0F)}, .objectID = process});
  EXPECT_EQ(hear("speakers"), (Frame{1.0F, 1.0F}));
}

} // namespace sonvel::simulated
