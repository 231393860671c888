#include "simulated/tapped_world.h"

namespace sonvel::simulated {

namespace {

constexpr OSStatus kScripted = -50;

} // namespace

class Failing : public TappedWorld {
 protected:
  OSStatus readRunning(AudioObjectID object) { return read(object, property::kProcessIsRunningOutput); }

  OSStatus readPID(AudioObjectID object) { return read(object, property::kProcessPID); }

 private:
  OSStatus read(AudioObjectID object, std::uint32_t selector) {
    std::array<std::byte, 4> data{};
    std::uint32_t size = 0;
    return audio.getPropertyData(object, globally(selector), size, data);
  }
};

TEST_F(Failing, TakesTheOccurrencesItIsToldTo) {
  struct Case {
    unsigned after;
    std::optional<unsigned> times;
    std::string fails; ///< one letter for each of five calls
  };

  for (const Case& item : {Case{0, 1, "x...."}, Case{2, 1, "..x.."}, Case{1, 2, ".xx.."},
                           Case{0, std::nullopt, "xxxxx"}, Case{3, std::nullopt, "...xx"}}) {
    audio.clearFailures();
    audio.fail(
        {.call = Call::getPropertyData, .status = kScripted, .after = item.after, .times = item.times});
    std::string fails;
    for (int i = 0; i < 5; ++i) {
      const OSStatus status = readPID(process);
      EXPECT_TRUE(status == kScripted || status == kNoError);
      fails += status == kScripted ? 'x' : '.';
      EXPECT_TRUE(audio.hasProperty(process, globally(property::kProcessPID)));
    }
    EXPECT_EQ(fails, item.fails);
  }
  audio.clearFailures();
  EXPECT_EQ(readPID(process), kNoError);
}

TEST_F(Failing, CanBeNarrowedToAnObjectAndASelector) {
  const AudioObjectID other = audio.addProcess({.pid = 8});
  audio.fail({.call = Call::getPropertyData,
              .status = kScripted,
              .object = process,
              .selector = property::kProcessPID});
  EXPECT_EQ(readPID(other), kNoError);
  EXPECT_EQ(readRunning(process), kNoError);
  EXPECT_EQ(readPID(process), kScripted);

  AudioObjectID tap = kAudioObjectUnknown;
  audio.fail({.call = Call::createProcessTap, .status = kScripted, .object = other});
  EXPECT_EQ(
      audio.createProcessTap(
          {.processes = {process}, .name = "", .isPrivate = true, .muteBehavior = TapMuteBehavior::muted},
          tap),
      kNoError);
  EXPECT_EQ(
      audio.createProcessTap(
          {.processes = {process, other}, .isPrivate = true, .muteBehavior = TapMuteBehavior::muted}, tap),
      kScripted);
}

TEST_F(Failing, OldestOrderTakesTheCallAndTheOthersCountIt) {
  audio.fail({.call = Call::getPropertyData, .status = -1});
  audio.fail({.call = Call::getPropertyData, .status = -2, .after = 1});
  EXPECT_EQ(readPID(process), -1);
  EXPECT_EQ(readPID(process), -2);
  EXPECT_EQ(readPID(process), kNoError);
}

TEST_F(Failing, OrderForAnyCallIsADeadServer) {
  const AudioObjectID tap = makeTap();
  audio.fail({.status = status::kNotRunning, .times = std::nullopt});
  AudioObjectID made = kAudioObjectUnknown;
  std::optional<std::string> text;
  EXPECT_EQ(audio.createProcessTap({}, made), status::kNotRunning);
  EXPECT_EQ(audio.getPropertyData(tap, globally(property::kTapUID), text), status::kNotRunning);
  EXPECT_FALSE(audio.hasProperty(tap, globally(property::kTapUID)));
  EXPECT_EQ(audio.destroyProcessTap(tap), status::kNotRunning);
  EXPECT_EQ(audio.taps().size(), 1U);
}

TEST_F(Failing, FailedUndoingLeavesEverythingAsItWas) {
  const AudioObjectID tap = makeTap();
  const AudioObjectID aggregate = makeAggregate(tap, "speakers");
  const IOProcID ioProc = startIOProc(aggregate, playing(2.0F));
  for (const Call call :
       {Call::deviceStop, Call::destroyIOProcID, Call::destroyAggregateDevice, Call::destroyProcessTap})
    audio.fail({.call = call, .status = kScripted});
  EXPECT_EQ(audio.deviceStop(aggregate, ioProc), kScripted);
  EXPECT_EQ(audio.destroyIOProcID(aggregate, ioProc), kScripted);
  EXPECT_EQ(audio.destroyAggregateDevice(aggregate), kScripted);
  EXPECT_EQ(audio.destroyProcessTap(tap), kScripted);
  EXPECT_EQ(hear("speakers"), (Frame{1.0F, 0.5F}));

  EXPECT_EQ(audio.deviceStop(aggregate, ioProc), kNoError);
  EXPECT_EQ(audio.destroyIOProcID(aggregate, ioProc), kNoError);
  EXPECT_EQ(audio.destroyAggregateDevice(aggregate), kNoError);
  EXPECT_EQ(audio.destroyProcessTap(tap), kNoError);
  EXPECT_TRUE(audio.isClean());
}

TEST_F(Failing, SuccessWithoutAnObject) {
  const AudioObjectID tap = makeTap();
  const AudioObjectID aggregate = makeAggregate(tap, "speakers");
  for (const Call call :
       {Call::createProcessTap, Call::createAggregateDevice, Call::createIOProcID, Call::getPropertyText})
    audio.fail({.call = call, .status = kNoError});
  AudioObjectID object = 1;
  IOProcID ioProc = 1;
  std::optional<std::string> text = "before";
  EXPECT_EQ(
      audio.createProcessTap(
          {.processes = {process}, .name = "", .isPrivate = true, .muteBehavior = TapMuteBehavior::muted},
          object),
      kNoError);
  EXPECT_EQ(object, kAudioObjectUnknown);
  object = 1;
  EXPECT_EQ(audio.createAggregateDevice(audio.aggregates().front().description, object), kNoError);
  EXPECT_EQ(object, kAudioObjectUnknown);
  EXPECT_EQ(audio.createIOProcID(aggregate, {}, playing(1.0F), ioProc), kNoError);
  EXPECT_EQ(ioProc, 0U);
  EXPECT_EQ(audio.getPropertyData(tap, globally(property::kTapUID), text), kNoError);
  EXPECT_EQ(text, std::nullopt);
  EXPECT_EQ(audio.taps().size(), 1U);
  EXPECT_EQ(audio.aggregates().size(), 1U);
  EXPECT_TRUE(audio.ioProcs().empty());
}

} // namespace sonvel::simulated
