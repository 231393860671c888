#include "audio/output_devices.h"
#include "simulated/simulated_audio.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sonvel {
namespace {

using simulated::Call;
using simulated::VolumeControl;
using testing::ElementsAre;

using Volumes = std::map<std::uint32_t, VolumeControl>;

TEST(OutputDevices, ListsWhatCanPlayInTheOrderOfTheSystem) {
  simulated::SimulatedAudio audio;
  const auto speakers = audio.addDevice({.uid = "speakers", .name = "Speakers"});
  audio.addDevice({.uid = "mic", .name = "Microphone", .outputStreams = 0, .inputStreams = 1});
  audio.addDevice({.uid = "agg", .name = "SonvelAgg-512"});
  audio.addDevice({.uid = "probe", .name = "SonvelProbeAgg"});
  const auto nameless = audio.addDevice({.uid = "hdmi", .name = std::nullopt});
  const auto headset = audio.addDevice({.uid = "a-headset", .name = "sonvelagg", .inputStreams = 1});

  EXPECT_THAT(enumerateOutputDevices(audio),
              ElementsAre(AudioOutputDevice{speakers, "speakers", "Speakers"},
                          AudioOutputDevice{nameless, "hdmi", "hdmi"},
                          AudioOutputDevice{headset, "a-headset", "sonvelagg"}));
}

TEST(OutputDevices, LeavesOutWhatCannotBeRead) {
  const struct {
    simulated::Failure failure;
    std::vector<std::string> names;
  } kCases[] = {
      {{.call = Call::getPropertyDataSize, .selector = property::kDevices}, {}},
      {{.call = Call::getPropertyData, .selector = property::kDevices}, {}},
      {{.call = Call::getPropertyDataSize, .selector = property::kDeviceStreams}, {"HDMI"}},
      {{.call = Call::getPropertyText, .selector = property::kDeviceUID}, {"HDMI"}},
      {{.call = Call::getPropertyText, .status = kNoError, .selector = property::kDeviceUID}, {"HDMI"}},
      {{.call = Call::getPropertyText, .selector = property::kObjectName}, {"Speakers", "HDMI"}},
      {{.call = Call::getPropertyText, .selector = property::kObjectName, .times = 2}, {"speakers", "HDMI"}},
      {{.call = Call::getPropertyText, .status = kNoError, .selector = property::kObjectName, .times = 2},
       {"speakers", "HDMI"}},
  };

  for (const auto& [failure, expected] : kCases) {
    simulated::SimulatedAudio audio;
    audio.addDevice({.uid = "speakers", .name = "Speakers"});
    audio.addDevice({.uid = "hdmi", .name = "HDMI"});
    audio.fail(failure);
    std::vector<std::string> names;
    for (const auto& device : enumerateOutputDevices(audio))
      names.push_back(device.name);
    EXPECT_EQ(names, expected) << *failure.call << " x" << *failure.times << ", status " << failure.status;
  }
}

TEST(OutputDevices, ReadsTheMasterVolume) {
  const struct {
    const char* what;
    Volumes volumes;
    std::optional<float> expected;
  } kCases[] = {
      {"the whole", {{0, {0.25F}}, {1, {0.5F}}, {2, {1.0F}}}, 0.25F},
      {"both channels", {{1, {0.5F}}, {2, {1.0F}}}, 0.75F},
      {"left alone", {{1, {0.5F}}}, 0.5F},
      {"right alone", {{2, {0.125F}}}, 0.125F},
      {"none", {}, std::nullopt},
      {"a channel beyond the second", {{3, {0.5F}}}, std::nullopt},
  };

  for (const auto& [what, volumes, expected] : kCases) {
    simulated::SimulatedAudio audio;
    audio.addDevice({.uid = "speakers", .volumes = volumes});
    EXPECT_EQ(readMasterVolume(audio), expected) << what;
  }
}

TEST(OutputDevices, FallsBackOnTheChannelsIfTheWholeCannotBeRead) {
  simulated::SimulatedAudio audio;
  audio.addDevice({.uid = "speakers", .volumes = {{0, {0.25F}}, {1, {0.5F}}, {2, {1.0F}}}});
  audio.fail({.call = Call::getPropertyData, .selector = property::kDeviceVolumeScalar});
  EXPECT_EQ(readMasterVolume(audio), 0.75F);
}

TEST(OutputDevices, WritesTheMasterVolume) {
  const VolumeControl fixed{.scalar = 0.5F, .isSettable = false};

  const struct {
    const char* what;
    Volumes volumes;
    float wanted;
    bool isWritten;
    std::vector<std::optional<float>> after; // the whole, left, right
  } kCases[] = {
      {"the whole", {{0, {0.5F}}}, 0.75F, true, {0.75F, std::nullopt, std::nullopt}},
      {"too loud", {{0, {0.5F}}}, 1.7F, true, {1.0F, std::nullopt, std::nullopt}},
      {"below silence", {{0, {0.5F}}}, -0.2F, true, {0.0F, std::nullopt, std::nullopt}},
      {"both channels", {{1, {0.5F}}, {2, {0.25F}}}, 0.75F, true, {std::nullopt, 0.75F, 0.75F}},
      {"a fixed left channel", {{1, fixed}, {2, {0.25F}}}, 0.75F, true, {std::nullopt, 0.5F, 0.75F}},
      {"a fixed whole", {{0, fixed}, {1, {0.5F}}}, 0.75F, true, {0.5F, 0.75F, std::nullopt}},
      {"all fixed", {{0, fixed}, {1, fixed}}, 0.75F, false, {0.5F, 0.5F, std::nullopt}},
      {"none", {}, 0.75F, false, {std::nullopt, std::nullopt, std::nullopt}},
  };

  for (const auto& [what, volumes, wanted, isWritten, after] : kCases) {
    simulated::SimulatedAudio audio;
    const auto device = audio.addDevice({.uid = "speakers", .volumes = volumes});
    EXPECT_EQ(writeMasterVolume(audio, wanted), isWritten) << what;
    for (const auto element : {kElementMain, kElementLeft, kElementRight})
      EXPECT_EQ(deviceVolume(audio, device, element), after[element]) << what << ", element " << element;
  }
}

TEST(OutputDevices, WritesNothingThatMayNotBeWritten) {
  for (const auto call : {Call::hasProperty, Call::isPropertySettable, Call::setPropertyData}) {
    simulated::SimulatedAudio audio;
    const auto device = audio.addDevice({.uid = "speakers", .volumes = {{0, {0.5F}}}});
    audio.fail({.call = call});
    EXPECT_FALSE(setDeviceVolume(audio, device, kElementMain, 1.0F)) << call;
    EXPECT_EQ(deviceVolume(audio, device, kElementMain), 0.5F) << call;
  }
}

TEST(OutputDevices, HasNoMasterVolumeWithoutADefaultDevice) {
  simulated::SimulatedAudio audio;
  audio.addDevice({.uid = "speakers", .volumes = {{0, {0.5F}}}});
  EXPECT_EQ(defaultOutputDeviceUID(audio), "speakers");

  const auto expectNone = [&] {
    EXPECT_EQ(defaultOutputDeviceUID(audio), std::nullopt);
    EXPECT_EQ(readMasterVolume(audio), std::nullopt);
    EXPECT_FALSE(writeMasterVolume(audio, 1.0F));
  };
  audio.setDefaultDevice(std::nullopt);
  expectNone();

  audio.setDefaultDevice("speakers");
  audio.fail(
      {.call = Call::getPropertyData, .selector = property::kDefaultOutputDevice, .times = std::nullopt});
  expectNone();
}

} // namespace
} // namespace sonvel
