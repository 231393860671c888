#pragma once

#include "simulated/simulated_audio.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace sonvel::simulated {

inline constexpr PropertyAddress globally(std::uint32_t selector) {
  return {selector, scope::kGlobal, kElementMain};
}

/// Plays its first input times `gain`.
inline IOProcBlock playing(float gain) {
  return [gain](const AudioTimeStamp&, const AudioBufferList& input, const AudioTimeStamp&,
                AudioBufferList& output, const AudioTimeStamp&) {
    const auto* const in = static_cast<const float*>(input.buffers[0].data);
    auto* const out = static_cast<float*>(output.buffers[0].data);
    for (std::size_t i = 0; i < output.buffers[0].sizeBytes / sizeof(float); ++i)
      out[i] = gain * in[i];
  };
}

/// Two devices, the first of them the default, and one process that plays 0.5 left and 0.25 right.
class TappedWorld : public testing::Test {
 protected:
  static constexpr Frame kOwn{0.5F, 0.25F};
  static constexpr Frame kSilence{};

  AudioObjectID makeTap(TapMuteBehavior muteBehavior = TapMuteBehavior::muted) {
    AudioObjectID tap = kAudioObjectUnknown;
    EXPECT_EQ(
        audio.createProcessTap(
            {.processes = {process}, .name = "tap", .isPrivate = true, .muteBehavior = muteBehavior}, tap),
        kNoError);
    return tap;
  }

  AudioObjectID makeAggregate(AudioObjectID tap, const std::string& deviceUID) {
    std::optional<std::string> tapUID;
    EXPECT_EQ(audio.getPropertyData(tap, globally(property::kTapUID), tapUID), kNoError);
    AggregateDeviceDescription description;
    description.uid = "on-" + deviceUID + std::to_string(tap);
    description.subDevices = {{deviceUID}};
    description.taps = {{*tapUID, true}};
    AudioObjectID device = kAudioObjectUnknown;
    EXPECT_EQ(audio.createAggregateDevice(description, device), kNoError);
    return device;
  }

  IOProcID startIOProc(AudioObjectID aggregate, IOProcBlock block) {
    IOProcID ioProc = 0;
    EXPECT_EQ(audio.createIOProcID(aggregate, {.label = "test"}, std::move(block), ioProc), kNoError);
    EXPECT_EQ(audio.deviceStart(aggregate, ioProc), kNoError);
    return ioProc;
  }

  /// What the device makes audible in one cycle, if it is the same frame throughout.
  std::optional<Frame> hear(const std::string& deviceUID) {
    audio.runCycle(64);
    const auto frames = audio.heard(deviceUID);
    if (frames.size() != 64 || std::count(frames.begin(), frames.end(), frames.front()) != 64)
      return std::nullopt;
    return frames.front();
  }

  SimulatedAudio audio;
  AudioObjectID speakers = audio.addDevice({.uid = "speakers", .name = "Speakers"});
  AudioObjectID headphones = audio.addDevice({.uid = "headphones"});
  AudioObjectID process = audio.addProcess({.pid = 7, .streams = {constantSignal(kOwn.left, kOwn.right)}});
};

} // namespace sonvel::simulated
