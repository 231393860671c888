#include "audio/output_devices.h"
#include "simulated/simulated_audio.h"

#include <gmock/gmock.h>

namespace sonvel {
namespace {

using simulated::Call;
using simulated::VolumeControl;
using testing::ElementsAre;

TEST(OutputDevices, ListsWhatCanPlayInTheOrderOfTheSystem) {
  simulated::SimulatedAudio audio;
  const auto speakers = audio.addDevice({.uid = "speakers", .name = "Speakers"});
  audio.addDevice({.uid = "mic", .name = "Microphone", .outputStreams = 0, .inputStreams = 1});
  audio.addDevice({.uid = "agg", .name = "SonvelAgg-512"});
  audio.addDevice({.uid = "probe", .name = "SonvelProbeAgg"});
  const auto nameless = audio.addDevice({.uid = "hdmi", .name = std::nullopt});
  const auto headset = audio.addDevice({.uid = "a-headset", .name = "sonvel\u202eagg\n", .inputStreams = 1});
  EXPECT_THAT(enumerateOutputDevices(audio),
              ElementsAre(AudioOutputDevice{speakers, "speakers", "Speakers"},
                          AudioOutputDevice{nameless, "hdmi", "hdmi"},
                          AudioOutputDevice{headset, "a-headset", "sonvelagg"}));

  audio.fail({.call = Call::getPropertyText, .object = speakers, .selector = property::kObjectName});
  EXPECT_EQ(enumerateOutputDevices(audio).front().name, "Speakers") << "it is asked for once more";
  audio.fail({.call = Call::getPropertyText, .object = speakers, .selector = property::kDeviceUID});
  EXPECT_EQ(enumerateOutputDevices(audio).front().uid, "hdmi");
}

TEST(OutputDevices, HaveTheVolumeOfTheWholeOrOfBothChannels) {
  const VolumeControl fixed{.scalar = 0.5F, .isSettable = false};

  const struct {
    const char* what;
    std::map<std::uint32_t, VolumeControl> volumes;
    std::optional<float> before;
    std::vector<std::optional<float>> after; ///< the whole, left and right after writing 0.75
    bool isWritten = true;
  } cases[] = {
      {"the whole", {{0, {0.25F}}, {1, {0.5F}}}, 0.25F, {0.75F, 0.5F, std::nullopt}},
      {"both channels", {{1, {0.5F}}, {2, {1.0F}}}, 0.75F, {std::nullopt, 0.75F, 0.75F}},
      {"right alone", {{2, {0.125F}}}, 0.125F, {std::nullopt, std::nullopt, 0.75F}},
      {"a fixed left", {{1, fixed}, {2, {1.0F}}}, 0.75F, {std::nullopt, 0.5F, 0.75F}},
      {"a fixed whole", {{0, fixed}, {1, {0.25F}}}, 0.5F, {0.5F, 0.75F, std::nullopt}},
      {"all fixed", {{0, fixed}, {1, fixed}}, 0.5F, {0.5F, 0.5F, std::nullopt}, false},
      {"none", {}, std::nullopt, {std::nullopt, std::nullopt, std::nullopt}, false},
  };

  for (const auto& [what, volumes, before, after, isWritten] : cases) {
    simulated::SimulatedAudio audio;
    const auto device = audio.addDevice({.uid = "speakers", .volumes = volumes});
    EXPECT_EQ(readMasterVolume(audio), before) << what;
    EXPECT_EQ(writeMasterVolume(audio, 0.75F), isWritten) << what;
    for (const auto element : {kElementMain, kElementLeft, kElementRight})
      EXPECT_EQ(deviceVolume(audio, device, element), after[element]) << what << ", element " << element;
  }
}

TEST(OutputDevices, HaveNoMasterVolumeWithoutADefaultDevice) {
  simulated::SimulatedAudio audio;
  audio.addDevice({.uid = "speakers", .volumes = {{0, {0.5F}}}});
  EXPECT_TRUE(writeMasterVolume(audio, 1.7F));
  EXPECT_EQ(readMasterVolume(audio), 1.0F);
  audio.setDefaultDevice(std::nullopt);
  EXPECT_EQ(readMasterVolume(audio), std::nullopt);
  EXPECT_FALSE(writeMasterVolume(audio, 1.0F));
}

} // namespace
} // namespace sonvel
