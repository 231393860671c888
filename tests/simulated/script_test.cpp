#include "simulated/tapped_world.h"

#include <set>
#include <stdexcept>

namespace sonvel::simulated {

class Script : public TappedWorld {
 protected:
  std::vector<std::uint32_t> list(AudioObjectID object, const PropertyAddress& address) {
    std::vector<std::uint32_t> items(16);
    std::uint32_t size = 0;
    EXPECT_EQ(audio.getPropertyData(object, address, size, std::as_writable_bytes(std::span(items))),
              kNoError);
    items.resize(size / sizeof(std::uint32_t));
    return items;
  }

  std::optional<float> volume(std::uint32_t element) {
    float scalar = 0.0F;
    std::uint32_t size = 0;
    const PropertyAddress address{property::kDeviceVolumeScalar, scope::kOutput, element};
    if (audio.getPropertyData(mixer, address, size, std::as_writable_bytes(std::span(&scalar, 1))))
      return std::nullopt;
    return scalar;
  }

  OSStatus setVolume(std::uint32_t element, float scalar) {
    return audio.setPropertyData(mixer, {property::kDeviceVolumeScalar, scope::kOutput, element},
                                 std::as_bytes(std::span(&scalar, 1)));
  }

  AudioObjectID mixer = kAudioObjectUnknown; ///< the device whose volume is read and written
};

TEST_F(Script, ListsKeepTheOrderOfTheScript) {
  const AudioObjectID given = audio.addProcess({.pid = 3, .objectID = 9000});
  const AudioObjectID next = audio.addProcess({.pid = 2});
  EXPECT_EQ(given, 9000U);
  EXPECT_EQ(list(kSystemObject, globally(property::kProcessObjectList)),
            (std::vector<AudioObjectID>{process, given, next}));

  const AudioObjectID aggregate = makeAggregate(makeTap(), "speakers");
  const AudioObjectID late = audio.addDevice({.uid = "late"});
  EXPECT_EQ(list(kSystemObject, globally(property::kDevices)),
            (std::vector<AudioObjectID>{speakers, headphones, late, aggregate}));
}

TEST_F(Script, ObjectsAreNeverNamedTwice) {
  std::set<AudioObjectID> seen{kSystemObject, speakers, headphones, process};
  for (int i = 0; i < 3; ++i) {
    const AudioObjectID tap = makeTap();
    const AudioObjectID aggregate = makeAggregate(tap, "speakers");
    EXPECT_TRUE(seen.insert(tap).second);
    EXPECT_TRUE(seen.insert(aggregate).second);
    EXPECT_EQ(audio.destroyAggregateDevice(aggregate), kNoError);
    EXPECT_EQ(audio.destroyProcessTap(tap), kNoError);
    audio.removeDevice("headphones");
    EXPECT_TRUE(seen.insert(audio.returnDevice("headphones")).second);
  }
}

TEST_F(Script, StreamsCountByScope) {
  const AudioObjectID both = audio.addDevice({.uid = "both", .outputStreams = 2, .inputStreams = 1});
  const AudioObjectID microphone = audio.addDevice({.uid = "in", .outputStreams = 0, .inputStreams = 1});
  const PropertyAddress outputs{property::kDeviceStreams, scope::kOutput, kElementMain};
  const PropertyAddress inputs{property::kDeviceStreams, fourCharCode("inpt"), kElementMain};
  EXPECT_EQ(list(both, outputs).size(), 2U);
  EXPECT_EQ(list(both, inputs).size(), 1U);
  EXPECT_EQ(list(microphone, outputs).size(), 0U);
}

TEST_F(Script, AbsentStringsAreNullReferences) {
  for (const auto& [object, selector] :
       {std::pair{process, property::kProcessBundleID}, std::pair{headphones, property::kObjectName}}) {
    std::optional<std::string> text = "before";
    EXPECT_TRUE(audio.hasProperty(object, globally(selector)));
    EXPECT_EQ(audio.getPropertyData(object, globally(selector), text), kNoError);
    EXPECT_EQ(text, std::nullopt);
  }
}

TEST_F(Script, VolumeControlsAreThoseOfTheScript) {
  mixer = audio.addDevice(
      {.uid = "mixer",
       .volumes = {{kElementMain, {.scalar = 0.3F, .isSettable = false}}, {kElementLeft, {.scalar = 0.5F}}}});
  EXPECT_EQ(volume(kElementMain), 0.3F);
  EXPECT_EQ(volume(kElementRight), std::nullopt);
  EXPECT_EQ(setVolume(kElementMain, 0.9F), status::kIllegalOperation);
  EXPECT_EQ(setVolume(kElementRight, 0.9F), status::kUnknownProperty);
  EXPECT_EQ(setVolume(kElementLeft, 1.5F), kNoError);
  EXPECT_EQ(volume(kElementMain), 0.3F);
  EXPECT_EQ(volume(kElementLeft), 1.0F);
  EXPECT_EQ(setVolume(kElementLeft, -0.5F), kNoError);
  EXPECT_EQ(volume(kElementLeft), 0.0F);
}

TEST_F(Script, LogTellsWhatWasAskedAndAnswered) {
  audio.clearLog();
  const AudioObjectID tap = makeTap();
  audio.destroyProcessTap(4711);
  const auto log = audio.log();
  ASSERT_EQ(log.size(), 2U);
  EXPECT_EQ(log[0], (LoggedCall{.call = Call::createProcessTap,
                                .object = tap,
                                .tap = TapDescription{.processes = {process},
                                                      .name = "tap",
                                                      .isPrivate = true,
                                                      .muteBehavior = TapMuteBehavior::muted}}));
  EXPECT_EQ(log[1],
            (LoggedCall{.call = Call::destroyProcessTap, .object = 4711, .status = status::kBadObject}));
}

TEST_F(Script, HookCanChangeTheWorldBeforeACall) {
  audio.setCallHook([this](Call call, AudioObjectID object) {
    if (call == Call::getPropertyText && object == headphones) audio.removeDevice("headphones");
  });
  std::optional<std::string> text;
  EXPECT_EQ(audio.getPropertyData(speakers, globally(property::kDeviceUID), text), kNoError);
  EXPECT_EQ(text, "speakers");
  EXPECT_EQ(audio.getPropertyData(headphones, globally(property::kDeviceUID), text), status::kBadObject);
}

TEST_F(Script, MistakesInAScriptThrow) {
  EXPECT_THROW(audio.addProcess({.objectID = process}), std::invalid_argument);
  EXPECT_THROW(audio.addDevice({.uid = "speakers"}), std::invalid_argument);
  EXPECT_THROW(audio.setPlaying(4711, true), std::invalid_argument);
  EXPECT_THROW(audio.removeProcess(4711), std::invalid_argument);
  EXPECT_THROW(audio.removeDevice("none"), std::invalid_argument);
  EXPECT_THROW(audio.returnDevice("speakers"), std::invalid_argument);
  EXPECT_THROW(audio.setDefaultDevice("none"), std::invalid_argument);
  EXPECT_THROW(audio.loseTap(process), std::invalid_argument);
}

} // namespace sonvel::simulated
